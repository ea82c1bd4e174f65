#pragma once

#include <ostream>
#include <string>

namespace stowhaven {

// "stowhaven share vcard FILE": the current session as the vCard that another device
// imports ("Stow Haven.vcf" when sent by mail), written to FILE.
class ShareCommand {
public:
    static int runVCard(const std::string& file, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
