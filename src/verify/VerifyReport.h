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
    // BEFORELINE runs before each line is written: the progress shown on the terminal goes.
    VerifyReport(std::ostream& out, bool asJson, std::function<void()> beforeLine = nullptr)
        : out_(out), asJson_(asJson), beforeLine_(std::move(beforeLine)) {}

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
    std::function<void()> beforeLine_;
    std::size_t checked_ = 0;
    std::size_t faults_ = 0;
};

}  // namespace stowhaven
