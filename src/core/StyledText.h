#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// Text for a printer or a rich display: runs of body text and headings.
class StyledText {
public:
    enum class Style { Body, Heading };
    struct Run {
        std::string text;
        Style style = Style::Body;
    };

    void append(std::string text, Style style = Style::Body) { runs_.push_back({std::move(text), style}); }
    const std::vector<Run>& runs() const { return runs_; }
    bool empty() const { return runs_.empty(); }
    // The text without its styles.
    std::string plainText() const {
        std::string text;
        for (const Run& run : runs_) text += run.text;
        return text;
    }

private:
    std::vector<Run> runs_;
};

}  // namespace stowhaven
