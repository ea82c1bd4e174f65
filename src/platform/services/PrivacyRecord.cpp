#include "platform/services/PrivacyRecord.h"

#include "platform/DeviceRoot.h"
#include "platform/Failure.h"
#include "platform/SqliteDatabase.h"

#include <sqlite3.h>

#include <filesystem>

namespace stowhaven::PrivacyRecord {

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

std::string databasePath() { return DeviceRoot::var() + "/mobile/Library/TCC/TCC.db"; }

}  // namespace

Decision decisionFor(const char* service) {
    auto database = SqliteDatabase::open(databasePath(), SQLITE_OPEN_READONLY);
    if (database == nullptr) return Decision::None;
    database->setBusyTimeout(2s);
    auto statement = database->prepare("SELECT allowed FROM access WHERE service = ? AND client = ?");
    statement.bindText(1, service).bindText(2, kClient);
    if (statement.step() != SqliteDatabase::Statement::Step::Row) return Decision::None;
    return statement.columnInt(0) != 0 ? Decision::Allowed : Decision::Refused;
}

bool recordGrant(const char* service, std::string* error) {
    const std::string path = databasePath();
    std::error_code code;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), code);
    if (code) return fail(error, code.message());
    auto database = SqliteDatabase::open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, error);
    if (database == nullptr) return false;
    database->setBusyTimeout(2s);
    if (!database->exec(kAccessTable, error)) return false;
    auto statement = database->prepare(kGrant);
    return statement.bindText(1, service).bindText(2, kClient).run(error);
}

}  // namespace stowhaven::PrivacyRecord
