#include "restore/ArchiveMembers.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "restore/ArchiveListing.h"

#include <set>

namespace stowhaven {

std::optional<ArchiveMembers> ArchiveMembers::of(const std::string& archive, const Placement& placement) {
    const auto members = listArchiveMembers(archive);
    if (!members) return std::nullopt;
    ExtractionPlan plan(placement.owned, placement.target, placement.strip);
    ArchiveMembers sorted;
    std::set<std::string> refusedNames;
    for (const auto& member : *members) {
        std::string reason;
        const auto landing = plan.place(member, reason);
        if (!landing) {
            SH_LOG("Refusing <{}> of <{}>: {}", member.name, archive, reason);
            refusedNames.insert(member.name);
        } else if (!landing->path.empty()) {
            sorted.landings_[member.name].push_back(*landing);
        }
    }
    std::string reason;
    if (!plan.linksStayWithin(reason)) {
        SH_LOG("Refusing the whole of <{}>: {}", archive, reason);
        return std::nullopt;
    }
    std::set<std::string> listed;
    for (const auto& member : *members) {
        if (!listed.insert(member.name).second) continue;
        if (refusedNames.contains(member.name)) {
            sorted.landings_.erase(member.name);
        } else if (sorted.landings_.contains(member.name)) {
            sorted.allowed_.push_back(member.name);
        }
    }
    return sorted;
}

void ArchiveMembers::giveToOwners(const std::vector<std::string>& names) const {
    for (const std::string& name : names) {
        const auto found = landings_.find(name);
        if (found == landings_.end()) continue;
        for (const auto& landing : found->second) {
            std::string error;
            if (FileManager::attributesOfItem(landing.path) &&
                !FileManager::setOwner(landing.path, landing.ownerId, landing.groupId, &error)) {
                SH_LOG("{}", error);
            }
        }
    }
}

}  // namespace stowhaven
