#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// A printout as a PDF file of US Letter pages (612 by 792 points): paragraphs of body text
// and headings set page after page until the whole text is placed, each page numbered
// "Page N" at its foot.
class PdfDocument {
public:
    struct Run {
        std::string text;
        bool heading = false;
    };
    enum class Outcome { Written, NothingToLayOut, LayoutFailed };

    static constexpr double kPageWidth = 612;
    static constexpr double kPageHeight = 792;

    // Writes RUNS to PATH. No file is left behind unless it is Written; ERROR says why the
    // layout failed.
    static Outcome write(const std::vector<Run>& runs, const std::string& path, std::string& error);
};

}  // namespace stowhaven
