#include "platform/PrintableOutput.h"

#include <algorithm>
#include <iostream>

namespace stowhaven {

namespace {

class PrintableBuffer final : public std::streambuf {
public:
    explicit PrintableBuffer(std::streambuf* target) : target_(target) {}

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        return target_->sputc(PrintableOutput::printable(traits_type::to_char_type(c)));
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override {
        const std::string copy = PrintableOutput::printable(std::string(text, static_cast<std::size_t>(count)));
        return target_->sputn(copy.data(), count);
    }

    int sync() override { return target_->pubsync(); }

public:
    std::streambuf* target() const { return target_; }

private:
    std::streambuf* target_;
};

}  // namespace

char PrintableOutput::printable(char c) {
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
    return control && c != '\n' && c != '\t' ? '?' : c;
}

std::string PrintableOutput::printable(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return printable(c); });
    return text;
}

void PrintableOutput::filterStandardStreams() {
    // Never destroyed: the standard streams are flushed after every static object is gone.
    std::cout.rdbuf(new PrintableBuffer(std::cout.rdbuf()));
    std::cerr.rdbuf(new PrintableBuffer(std::cerr.rdbuf()));
}

void PrintableOutput::returnToLineStart(std::ostream& out) {
    auto* filter = dynamic_cast<PrintableBuffer*>(out.rdbuf());
    (filter != nullptr ? filter->target() : out.rdbuf())->sputc('\r');
}

}  // namespace stowhaven
