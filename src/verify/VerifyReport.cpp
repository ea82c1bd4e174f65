#include "verify/VerifyReport.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

namespace stowhaven {

void VerifyReport::sound(const std::string& stamp, const std::string& item, const std::string& detail) {
    write(stamp, item, std::nullopt, detail);
}

void VerifyReport::fault(const std::string& stamp, const std::string& item, const std::string& fault) {
    if (!leaving_ && hooks_.faultsMeanSomething && !hooks_.faultsMeanSomething()) leaving_ = true;
    if (leaving_) return;
    ++faults_;
    write(stamp, item, fault, {});
}

void VerifyReport::write(const std::string& stamp, const std::string& item, const std::optional<std::string>& fault,
                         const std::string& detail) {
    if (leaving_) return;
    ++checked_;
    if (hooks_.beforeLine) hooks_.beforeLine();
    if (asJson_) {
        nlohmann::json line = {{"session", stamp}, {"item", item}, {"ok", !fault}};
        if (fault) line["fault"] = *fault;
        if (!detail.empty()) line["detail"] = detail;
        // Names come from storage: whatever bytes they hold stay readable JSON.
        out_ << line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n' << std::flush;
        return;
    }
    if (fault) {
        fmt::print(out_, "{}  {}  FAULT: {}\n", stamp, item, *fault);
    } else {
        fmt::print(out_, "{}  {}  OK{}\n", stamp, item, detail.empty() ? "" : " (" + detail + ")");
    }
    out_ << std::flush;
}

void VerifyReport::summary(std::size_t sessions) {
    if (leaving_) return;
    if (hooks_.beforeLine) hooks_.beforeLine();
    if (asJson_) {
        const nlohmann::json line = {
            {"summary", {{"sessions", sessions}, {"checked", checked_}, {"faults", faults_}, {"ok", faults_ == 0}}}};
        out_ << line.dump() << '\n';
        return;
    }
    fmt::print(out_, "{} session(s), {} item(s) checked: {}\n", sessions, checked_,
               faults_ == 0 ? std::string("all sound") : fmt::format("{} fault(s)", faults_));
}

}  // namespace stowhaven
