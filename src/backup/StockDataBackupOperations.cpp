#include "backup/StockDataBackupOperations.h"

namespace stowhaven {

CalendarBackupOperation::CalendarBackupOperation()
    : CategoryBackupOperation("CALENDAR", StockDataSet::Calendar, "/var/mobile/Library/Calendar") {}

ContactsBackupOperation::ContactsBackupOperation()
    : CategoryBackupOperation("CONTACTS", StockDataSet::Contacts, "/var/mobile/Library/AddressBook") {}

HealthBackupOperation::HealthBackupOperation()
    : CategoryBackupOperation("HEALTH", StockDataSet::Health, "/var/mobile/Library/Health") {}

MapsBackupOperation::MapsBackupOperation()
    : CategoryBackupOperation("MAPS", StockDataSet::Maps, "/var/mobile/Library/Maps") {}

MessagesBackupOperation::MessagesBackupOperation()
    : CategoryBackupOperation("CHAT", StockDataSet::Chat, "/var/mobile/Library/SMS") {}

NotesBackupOperation::NotesBackupOperation()
    : CategoryBackupOperation("NOTES", StockDataSet::Notes, "/var/mobile/Library/Notes") {}

PhoneBackupOperation::PhoneBackupOperation()
    : CategoryBackupOperation("PHONE", StockDataSet::Phone, "/var/wireless/Library/CallHistory") {}

SafariBackupOperation::SafariBackupOperation()
    : CategoryBackupOperation("SAFARI", StockDataSet::Safari, "/var/mobile/Library/Safari") {}

}  // namespace stowhaven
