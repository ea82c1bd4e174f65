#include "platform/services/HostContactsAccess.h"

#include "platform/DeviceRoot.h"
#include "platform/Failure.h"
#include "platform/Log.h"
#include "platform/SqliteDatabase.h"

#include <sqlite3.h>

#include <filesystem>

namespace stowhaven {

namespace {

using namespace std::chrono_literals;

// The table as the device defines it.
constexpr const char* kAccessTable =
    "CREATE TABLE IF NOT EXISTS access (service TEXT, client TEXT, client_type INTEGER, allowed INTEGER,"
    " prompt_count INTEGER, csreq BLOB, PRIMARY KEY(service, client))";
// client_type 0: the client is a bundle identifier.
constexpr const char* kGrant =
    "INSERT INTO access (service, client, client_type, allowed, prompt_count) VALUES (?, ?, 0, 1, 1)"
    " ON CONFLICT(service, client) DO UPDATE SET allowed = 1, prompt_count = prompt_count + 1";

}  // namespace

std::string HostContactsAccess::databasePath() { return DeviceRoot::var() + "/mobile/Library/TCC/TCC.db"; }

ContactsAuthorization HostContactsAccess::authorizationStatus() const {
    // No file, no table or no row: nobody has decided yet.
    auto database = SqliteDatabase::open(databasePath(), SQLITE_OPEN_READONLY);
    if (database == nullptr) return ContactsAuthorization::NotDetermined;
    database->setBusyTimeout(2s);
    auto statement = database->prepare("SELECT allowed FROM access WHERE service = ? AND client = ?");
    statement.bindText(1, kService).bindText(2, kClient);
    if (statement.step() != SqliteDatabase::Statement::Step::Row) return ContactsAuthorization::NotDetermined;
    return statement.columnInt(0) != 0 ? ContactsAuthorization::Authorized : ContactsAuthorization::Denied;
}

void HostContactsAccess::requestAccess(std::function<void(bool granted)> completion) {
    const ContactsAuthorization status = authorizationStatus();
    if (status != ContactsAuthorization::NotDetermined) {
        completion(status == ContactsAuthorization::Authorized);
        return;
    }
    std::string error;
    const bool granted = recordGrant(&error);
    if (!granted) SH_LOG("can't record the access to the contacts in {}: {}", databasePath(), error);
    completion(granted);
}

bool HostContactsAccess::recordGrant(std::string* error) {
    const std::string path = databasePath();
    std::error_code code;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), code);
    if (code) return fail(error, code.message());
    auto database = SqliteDatabase::open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, error);
    if (database == nullptr) return false;
    database->setBusyTimeout(2s);
    if (!database->exec(kAccessTable, error)) return false;
    auto statement = database->prepare(kGrant);
    return statement.bindText(1, kService).bindText(2, kClient).run(error);
}

}  // namespace stowhaven
