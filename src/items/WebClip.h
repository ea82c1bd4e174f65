#pragma once

#include "items/PreferenceFile.h"

#include <string>

namespace stowhaven {

// A web clip of the home screen: NAME is its folder under the web clips folder, and its
// data the dictionary of the folder's Info.plist.
class WebClip : public PreferenceFile {
public:
    using PreferenceFile::PreferenceFile;
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override {
        return {"WebClip", "PreferenceFile", "SelectableItem", "NSObject"};
    }

    // The device path of the clip's icon.
    std::string displayIcon() const;
    // Its "Title"; empty without one.
    std::string displayName() const override;
};

}  // namespace stowhaven
