#include "platform/FileOwnership.h"

#include "platform/Failure.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <type_traits>
#include <vector>

namespace stowhaven {

namespace {

constexpr unsigned kPermissionBits = 07777;

std::size_t lookupBufferSize() {
    const long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
    return suggested > 0 ? static_cast<std::size_t>(suggested) : 16384;
}

// One field of the account database's entry for KEY, by one of the reentrant lookups; a
// name is copied out of the lookup's buffer.
template <typename Entry, typename Key, typename Field>
auto lookUp(int (*function)(Key, Entry*, char*, std::size_t, Entry**), Key key, Field Entry::*field) {
    using Result = std::conditional_t<std::is_same_v<Field, char*>, std::string, Field>;
    std::vector<char> buffer(lookupBufferSize());
    Entry entry{};
    Entry* found = nullptr;
    if (function(key, &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
        return std::optional<Result>();
    }
    return std::optional<Result>(found->*field);
}

}  // namespace

std::optional<FileOwnership> FileOwnership::read(const std::string& path, std::string* error) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        fail(error, "Can't read <" + path + ">: " + std::strerror(errno));
        return std::nullopt;
    }
    auto owner = lookUp(getpwuid_r, info.st_uid, &passwd::pw_name);
    if (!owner) {
        fail(error, "The owner " + std::to_string(info.st_uid) + " of <" + path + "> has no name");
        return std::nullopt;
    }
    return FileOwnership{info.st_mode & kPermissionBits, std::move(*owner),
                         lookUp(getgrgid_r, info.st_gid, &group::gr_name)};
}

bool FileOwnership::applyTo(const std::string& path, std::string* error) const {
    const auto owner = lookUp(getpwnam_r, ownerAccountName.c_str(), &passwd::pw_uid);
    if (!owner) return fail(error, "No account <" + ownerAccountName + "> for <" + path + ">");
    gid_t groupId = static_cast<gid_t>(-1);  // left as it is
    if (groupOwnerAccountName) {
        const auto found = lookUp(getgrnam_r, groupOwnerAccountName->c_str(), &group::gr_gid);
        if (!found) return fail(error, "No group <" + *groupOwnerAccountName + "> for <" + path + ">");
        groupId = *found;
    }
    if (lchown(path.c_str(), *owner, groupId) != 0) {
        return fail(error, "Can't change the owner of <" + path + ">: " + std::strerror(errno));
    }
    if (chmod(path.c_str(), permissions & kPermissionBits) != 0) {
        return fail(error, "Can't change the permissions of <" + path + ">: " + std::strerror(errno));
    }
    return true;
}

}  // namespace stowhaven
