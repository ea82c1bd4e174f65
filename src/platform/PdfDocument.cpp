#include "platform/PdfDocument.h"

#include <cairo-pdf.h>
#include <cairo.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace stowhaven {

namespace {

constexpr double kMargin = 54;  // three quarters of an inch
constexpr double kFooterHeight = 30;
constexpr const char* kBodyFont = "DejaVu Sans 11";
constexpr const char* kFooterFont = "DejaVu Sans 9";

template <typename T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* object) const { Free(object); }
};
using Surface = std::unique_ptr<cairo_surface_t, Deleter<cairo_surface_t, cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, Deleter<cairo_t, cairo_destroy>>;
using Iterator = std::unique_ptr<PangoLayoutIter, Deleter<PangoLayoutIter, pango_layout_iter_free>>;
using Font = std::unique_ptr<PangoFontDescription, Deleter<PangoFontDescription, pango_font_description_free>>;
using Attributes = std::unique_ptr<PangoAttrList, Deleter<PangoAttrList, pango_attr_list_unref>>;

void unrefObject(PangoLayout* layout) { g_object_unref(layout); }
using Layout = std::unique_ptr<PangoLayout, Deleter<PangoLayout, unrefObject>>;

// Package names come from control files: bytes that aren't UTF-8 are shown as U+FFFD, and
// a NUL, which would end the text early, as "?".
std::string validUtf8(std::string text) {
    std::replace(text.begin(), text.end(), '\0', '?');
    gchar* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    std::string result(valid);
    g_free(valid);
    return result;
}

Layout layoutFor(cairo_t* context, const char* fontName, double width) {
    Layout layout(pango_cairo_create_layout(context));
    // Font sizes in points of the page, not in pixels of a screen of 96 per inch.
    pango_cairo_context_set_resolution(pango_layout_get_context(layout.get()), 72);
    pango_layout_context_changed(layout.get());
    const Font font(pango_font_description_from_string(fontName));
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_width(layout.get(), pango_units_from_double(width));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    return layout;
}

// The whole text in one layout, as wide as a page's text, its headings larger and bold.
Layout textLayout(cairo_t* context, const std::vector<PdfDocument::Run>& runs) {
    std::string text;
    const Attributes attributes(pango_attr_list_new());
    for (const PdfDocument::Run& run : runs) {
        const std::string valid = validUtf8(run.text);
        if (run.heading) {
            for (PangoAttribute* attribute : {pango_attr_weight_new(PANGO_WEIGHT_BOLD), pango_attr_scale_new(1.3)}) {
                attribute->start_index = static_cast<guint>(text.size());
                attribute->end_index = static_cast<guint>(text.size() + valid.size());
                pango_attr_list_insert(attributes.get(), attribute);
            }
        }
        text += valid;
    }
    Layout layout = layoutFor(context, kBodyFont, PdfDocument::kPageWidth - 2 * kMargin);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_attributes(layout.get(), attributes.get());
    return layout;
}

void drawPageNumber(cairo_t* context, long number) {
    const Layout footer = layoutFor(context, kFooterFont, PdfDocument::kPageWidth - 2 * kMargin);
    const std::string text = "Page " + std::to_string(number);
    pango_layout_set_text(footer.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_alignment(footer.get(), PANGO_ALIGN_CENTER);
    cairo_move_to(context, kMargin, PdfDocument::kPageHeight - kMargin);
    pango_cairo_show_layout(context, footer.get());
}

bool hasText(const std::vector<PdfDocument::Run>& runs) {
    for (const PdfDocument::Run& run : runs) {
        if (!run.text.empty()) return true;
    }
    return false;
}

}  // namespace

PdfDocument::Outcome PdfDocument::write(const std::vector<Run>& runs, const std::string& path, std::string& error) {
    if (!hasText(runs)) return Outcome::NothingToLayOut;
    const Surface surface(cairo_pdf_surface_create(path.c_str(), kPageWidth, kPageHeight));
    if (const cairo_status_t status = cairo_surface_status(surface.get()); status != CAIRO_STATUS_SUCCESS) {
        error = cairo_status_to_string(status);
        return Outcome::LayoutFailed;
    }
    const Context context(cairo_create(surface.get()));
    const Layout layout = textLayout(context.get(), runs);

    // Each line goes on the page where it fits whole; the layout's own coordinates run on
    // through all pages, and pageTop is where the current page starts in them.
    const double textHeight = kPageHeight - 2 * kMargin - kFooterHeight;
    long page = 1;
    double pageTop = 0;
    const Iterator line(pango_layout_get_iter(layout.get()));
    do {
        PangoRectangle extents;
        pango_layout_iter_get_line_extents(line.get(), nullptr, &extents);
        const double top = pango_units_to_double(extents.y);
        const double bottom = top + pango_units_to_double(extents.height);
        if (bottom - pageTop > textHeight && top > pageTop) {
            drawPageNumber(context.get(), page++);
            cairo_show_page(context.get());
            pageTop = top;
        }
        const double baseline = pango_units_to_double(pango_layout_iter_get_baseline(line.get()));
        cairo_move_to(context.get(), kMargin + pango_units_to_double(extents.x), kMargin + baseline - pageTop);
        pango_cairo_show_layout_line(context.get(), pango_layout_iter_get_line_readonly(line.get()));
    } while (pango_layout_iter_next_line(line.get()));
    // The last page goes out with the finish.
    drawPageNumber(context.get(), page);
    cairo_surface_finish(surface.get());
    if (const cairo_status_t status = cairo_surface_status(surface.get()); status != CAIRO_STATUS_SUCCESS) {
        error = cairo_status_to_string(status);
        std::remove(path.c_str());
        return Outcome::LayoutFailed;
    }
    return Outcome::Written;
}

}  // namespace stowhaven
