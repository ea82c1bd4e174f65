#pragma once

#include <array>
#include <string_view>

namespace stowhaven {

// The personal data sets of the stock applications. Each is a storage folder and an
// archive of its own (the kind of data), and a pair of settings for its default choice.
enum class StockDataSet { Calendar, Chat, Contacts, Health, Maps, Notes, Phone, Photos, Safari, Videos };

inline constexpr std::array<StockDataSet, 10> kStockDataSets = {
    StockDataSet::Calendar, StockDataSet::Chat,  StockDataSet::Contacts, StockDataSet::Health, StockDataSet::Maps,
    StockDataSet::Notes,    StockDataSet::Phone, StockDataSet::Photos,   StockDataSet::Safari, StockDataSet::Videos};

// "Calendar", "Chat"...: the stem of the set's settings keys ("Calendar_Backup") and of its
// archive keys ("fCalendar", "calendarDataSize").
std::string_view stockDataSetName(StockDataSet set);

// The data sets, each with whether it is there to take and its size in megabytes: what
// the package catalogue holds for the device, and what a session holds for the backup it
// records.
class DataSetSizes {
public:
    virtual ~DataSetSizes() = default;

    virtual bool hasData(StockDataSet set) const = 0;
    virtual double dataSize(StockDataSet set) const = 0;
    // All that the selection takes, in megabytes.
    virtual double backupTotalSize() const = 0;

    bool hasCalendarData() const { return hasData(StockDataSet::Calendar); }
    bool hasChatData() const { return hasData(StockDataSet::Chat); }
    bool hasContactsData() const { return hasData(StockDataSet::Contacts); }
    bool hasHealthData() const { return hasData(StockDataSet::Health); }
    bool hasMapsData() const { return hasData(StockDataSet::Maps); }
    bool hasNotesData() const { return hasData(StockDataSet::Notes); }
    bool hasPhoneData() const { return hasData(StockDataSet::Phone); }
    bool hasPhotosData() const { return hasData(StockDataSet::Photos); }
    bool hasSafariData() const { return hasData(StockDataSet::Safari); }
    bool hasVideosData() const { return hasData(StockDataSet::Videos); }
    double calendarDataSize() const { return dataSize(StockDataSet::Calendar); }
    double chatDataSize() const { return dataSize(StockDataSet::Chat); }
    double contactsDataSize() const { return dataSize(StockDataSet::Contacts); }
    double healthDataSize() const { return dataSize(StockDataSet::Health); }
    double mapsDataSize() const { return dataSize(StockDataSet::Maps); }
    double notesDataSize() const { return dataSize(StockDataSet::Notes); }
    double phoneDataSize() const { return dataSize(StockDataSet::Phone); }
    double photosDataSize() const { return dataSize(StockDataSet::Photos); }
    double safariDataSize() const { return dataSize(StockDataSet::Safari); }
    double videosDataSize() const { return dataSize(StockDataSet::Videos); }
};

// The flags and sizes of the ten sets, as the catalogue and a session keep them.
class StockDataSets {
public:
    bool has(StockDataSet set) const { return flags_[index(set)]; }
    void setHas(StockDataSet set, bool has) { flags_[index(set)] = has; }
    double size(StockDataSet set) const { return sizes_[index(set)]; }
    void setSize(StockDataSet set, double size) { sizes_[index(set)] = size; }

private:
    static std::size_t index(StockDataSet set) { return static_cast<std::size_t>(set); }

    std::array<bool, kStockDataSets.size()> flags_{};
    std::array<double, kStockDataSets.size()> sizes_{};
};

}  // namespace stowhaven
