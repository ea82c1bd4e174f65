#include "core/DataSetSizes.h"

namespace stowhaven {

std::string_view stockDataSetName(StockDataSet set) {
    switch (set) {
        case StockDataSet::Calendar:
            return "Calendar";
        case StockDataSet::Chat:
            return "Chat";
        case StockDataSet::Contacts:
            return "Contacts";
        case StockDataSet::Health:
            return "Health";
        case StockDataSet::Maps:
            return "Maps";
        case StockDataSet::Notes:
            return "Notes";
        case StockDataSet::Phone:
            return "Phone";
        case StockDataSet::Photos:
            return "Photos";
        case StockDataSet::Safari:
            return "Safari";
        case StockDataSet::Videos:
            return "Videos";
    }
    return "";
}

}  // namespace stowhaven
