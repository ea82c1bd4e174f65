#pragma once

#include "backup/CategoryBackupOperation.h"

namespace stowhaven {

// The stock data sets that are one folder each, archived as it stands.

class CalendarBackupOperation final : public CategoryBackupOperation {
public:
    CalendarBackupOperation();
};

class ContactsBackupOperation final : public CategoryBackupOperation {
public:
    ContactsBackupOperation();
};

class HealthBackupOperation final : public CategoryBackupOperation {
public:
    HealthBackupOperation();
};

class MapsBackupOperation final : public CategoryBackupOperation {
public:
    MapsBackupOperation();
};

class MessagesBackupOperation final : public CategoryBackupOperation {
public:
    MessagesBackupOperation();
};

class NotesBackupOperation final : public CategoryBackupOperation {
public:
    NotesBackupOperation();
};

class PhoneBackupOperation final : public CategoryBackupOperation {
public:
    PhoneBackupOperation();
};

class SafariBackupOperation final : public CategoryBackupOperation {
public:
    SafariBackupOperation();
};

}  // namespace stowhaven
