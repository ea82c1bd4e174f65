#pragma once

namespace stowhaven {

// The personal data sets of a backup, each with whether it is there to take and its size in
// megabytes: what the package catalogue holds for the device, and what a session holds
// for the backup it records.
class DataSetSizes {
public:
    virtual ~DataSetSizes() = default;

    virtual bool hasCalendarData() const = 0;
    virtual double calendarDataSize() const = 0;
    virtual bool hasChatData() const = 0;
    virtual double chatDataSize() const = 0;
    virtual bool hasHealthData() const = 0;
    virtual double healthDataSize() const = 0;
    virtual bool hasPhoneData() const = 0;
    virtual double phoneDataSize() const = 0;
    virtual bool hasVideosData() const = 0;
    virtual double videosDataSize() const = 0;
    virtual bool hasContactsData() const = 0;
    virtual double contactsDataSize() const = 0;
    virtual bool hasNotesData() const = 0;
    virtual double notesDataSize() const = 0;
    virtual bool hasMapsData() const = 0;
    virtual double mapsDataSize() const = 0;
    virtual bool hasPhotosData() const = 0;
    virtual double photosDataSize() const = 0;
    virtual bool hasSafariData() const = 0;
    virtual double safariDataSize() const = 0;

    // All that the selection takes, in megabytes.
    virtual double backupTotalSize() const = 0;
};

}  // namespace stowhaven
