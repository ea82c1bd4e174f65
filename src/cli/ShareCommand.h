#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace stowhaven {

// "stowhaven share ...": the sharing actions of the main screen's options as commands. Each
// loads the catalogue as the main screen does; what there is to share follows the direction
// the user works in. An empty list is told by the "nothing to share" alert.
class ShareCommand {
public:
    // The package list as text, on OUT or in FILE.
    static int runText(const std::optional<std::string>& file, std::ostream& out, std::ostream& errors);
    // The package list mailed through the device's mail composer, to RECIPIENTS if any; 2
    // for an address that is not one.
    static int runMail(const std::vector<std::string>& recipients, std::ostream& out, std::ostream& errors);
    // The current session as the vCard that another device imports ("Stow Haven.vcf"),
    // written to FILE, or mailed without one.
    static int runVCard(const std::optional<std::string>& file, std::ostream& out, std::ostream& errors);
    // The package list on the terminal's clipboard, or in OUTPUT_FILE.
    static int runClipboard(const std::optional<std::string>& outputFile, std::ostream& out, std::ostream& errors);
    // The package list printed as a PDF in FILE ("stowhaven.pdf" in the temporary folder
    // without one).
    static int runPdf(const std::optional<std::string>& file, std::ostream& out, std::ostream& errors);
};

}  // namespace stowhaven
