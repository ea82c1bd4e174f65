#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// What a verification found, item by item as it goes, then in sum: for a person one line
// per item ("<stamp>  <item>  OK" or "... FAULT: <what>") and a summary line; with JSON one
// object per line, the summary last. Nothing is kept but the counts.
class VerifyReport {
public:
    struct Hooks {
        // Runs before each line is written: the progress shown on the terminal goes.
        std::function<void()> beforeLine;
        // Asked before a fault is written: once the program is leaving (Ctrl-C), the tools
        // it stopped fail every check, which says nothing of the session; from then on
        // nothing more is written.
        std::function<bool()> faultsMeanSomething;
    };

    VerifyReport(std::ostream& out, bool asJson, Hooks hooks = {})
        : out_(out), asJson_(asJson), hooks_(std::move(hooks)) {}

    // ITEM of the session of STAMP is sound (DETAIL says what was seen, may be empty), or
    // has FAULT.
    void sound(const std::string& stamp, const std::string& item, const std::string& detail = {});
    void fault(const std::string& stamp, const std::string& item, const std::string& fault);

    void summary(std::size_t sessions);
    bool allSound() const { return faults_ == 0; }

private:
    void write(const std::string& stamp, const std::string& item, const std::optional<std::string>& fault,
               const std::string& detail);

    std::ostream& out_;
    bool asJson_;
    Hooks hooks_;
    bool leaving_ = false;
    std::size_t checked_ = 0;
    std::size_t faults_ = 0;
};

}  // namespace stowhaven
