#include "platform/services/HostContactsAccess.h"

#include "support/DeviceRootScope.h"
#include "support/SqlRows.h"
#include "support/TestFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace stowhaven {
namespace {

using ::testing::ElementsAre;

class HostContactsAccessTest : public ::testing::Test {
protected:
    // Runs SQL on the device's privacy database, made where missing.
    std::vector<std::string> tcc(const std::string& sql) const { return test::sqlRows(database, sql); }

    void makeTable() const {
        tcc("CREATE TABLE access (service TEXT, client TEXT, client_type INTEGER, allowed INTEGER,"
            " prompt_count INTEGER, csreq BLOB, PRIMARY KEY(service, client))");
    }

    // Asks, and answers what the completion got before requestAccess returned.
    std::optional<bool> request() {
        std::optional<bool> answer;
        access.requestAccess([&](bool granted) { answer = granted; });
        return answer;
    }

    test::TestFolder folder;
    test::DeviceRootScope root{folder.path().string()};
    std::string database = folder / "var/mobile/Library/TCC/TCC.db";
    HostContactsAccess access;
};

TEST_F(HostContactsAccessTest, TheStatusIsTheDecisionRecordedForTheProgramAndTheAddressBookAndARequestKeepsIt) {
    EXPECT_EQ(access.authorizationStatus(), ContactsAuthorization::NotDetermined);
    EXPECT_FALSE(std::filesystem::exists(database)) << "asking the status records nothing";

    makeTable();
    tcc("INSERT INTO access VALUES ('kTCCServiceAddressBook', 'com.example.other', 0, 1, 1, NULL),"
        " ('kTCCServiceCalendar', 'com.larkmoor.stowhaven', 0, 1, 1, NULL)");
    EXPECT_EQ(access.authorizationStatus(), ContactsAuthorization::NotDetermined);

    tcc("INSERT INTO access VALUES ('kTCCServiceAddressBook', 'com.larkmoor.stowhaven', 0, 0, 1, NULL)");
    EXPECT_EQ(access.authorizationStatus(), ContactsAuthorization::Denied);
    EXPECT_EQ(request(), false);

    tcc("UPDATE access SET allowed = 1 WHERE service = 'kTCCServiceAddressBook'");
    EXPECT_EQ(access.authorizationStatus(), ContactsAuthorization::Authorized);
    EXPECT_EQ(request(), true);
    EXPECT_THAT(tcc("SELECT allowed, prompt_count FROM access WHERE service = 'kTCCServiceAddressBook'"
                    " AND client = 'com.larkmoor.stowhaven'"),
                ElementsAre("1|1"));
}

TEST_F(HostContactsAccessTest, ARequestWithoutADecisionRecordsTheGrantAsTheDeviceDoes) {
    EXPECT_EQ(request(), true);
    EXPECT_EQ(access.authorizationStatus(), ContactsAuthorization::Authorized);
    EXPECT_THAT(tcc("SELECT service, client, client_type, allowed, prompt_count FROM access"),
                ElementsAre("kTCCServiceAddressBook|com.larkmoor.stowhaven|0|1|1"));

    // Another program's decisions in a database that is there already stay as they are.
    std::filesystem::remove(database);
    makeTable();
    tcc("INSERT INTO access VALUES ('kTCCServiceAddressBook', 'com.example.other', 0, 0, 2, X'CAFE')");
    EXPECT_EQ(request(), true);
    EXPECT_THAT(tcc("SELECT client, allowed, prompt_count, quote(csreq) FROM access ORDER BY client"),
                ElementsAre("com.example.other|0|2|X'CAFE'", "com.larkmoor.stowhaven|1|1|NULL"));
}

}  // namespace
}  // namespace stowhaven
