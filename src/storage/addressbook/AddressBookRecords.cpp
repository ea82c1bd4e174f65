#include "storage/addressbook/AddressBookRecords.h"

#include <mutex>

namespace stowhaven {

namespace {

std::mutex gRecordsMutex;
std::shared_ptr<AddressBookRecords> gRecords;

}  // namespace

std::shared_ptr<AddressBookRecords> AddressBookRecords::shared() {
    std::lock_guard lock(gRecordsMutex);
    return gRecords;
}

void AddressBookRecords::setShared(std::shared_ptr<AddressBookRecords> records) {
    std::lock_guard lock(gRecordsMutex);
    gRecords = std::move(records);
}

}  // namespace stowhaven
