#include "net/FtpRequest.h"

#include <cctype>
#include <iterator>
#include <optional>

namespace stowhaven::FtpRequest {

namespace {

bool startsWithCode(const std::string& line) {
    return line.size() >= 3 && std::isdigit(static_cast<unsigned char>(line[0])) &&
           std::isdigit(static_cast<unsigned char>(line[1])) && std::isdigit(static_cast<unsigned char>(line[2]));
}

// "550 No such file": the last line of a reply; "550-..." opens a reply of several lines.
bool isFinalLine(const std::string& line) { return startsWithCode(line) && (line.size() == 3 || line[3] == ' '); }

// The server's last reply, its lines joined; a goodbye after it doesn't count.
std::optional<std::string> lastReply(const std::deque<std::string>& lines) {
    auto last = lines.rbegin();
    while (last != lines.rend() && (!isFinalLine(*last) || last->starts_with("221"))) ++last;
    if (last == lines.rend()) return std::nullopt;
    const std::string opening = last->substr(0, 3) + "-";
    auto first = last;
    for (auto line = std::next(last); line != lines.rend() && !isFinalLine(*line); ++line) {
        if (line->starts_with(opening)) {
            first = line;
            break;
        }
    }
    std::string reply;
    for (auto line = first;; --line) {
        reply += (reply.empty() ? "" : " ") + *line;
        if (line == last) break;
    }
    return reply;
}

std::size_t discard(char*, std::size_t size, std::size_t count, void*) { return size * count; }

}  // namespace

void prepare(CurlHandle& handle, const FtpAccount& account, const std::string& url) {
    handle.reset();
    handle.set(CURLOPT_URL, url.c_str());
    handle.set(CURLOPT_PROTOCOLS_STR, "ftp");
    handle.set(CURLOPT_USERNAME, account.login.c_str());
    handle.set(CURLOPT_PASSWORD, account.password.c_str());
    handle.set(CURLOPT_SERVER_RESPONSE_TIMEOUT, CurlHandle::kStalledSeconds);
    handle.set(CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_NOCWD));
    handle.set(CURLOPT_TRANSFERTEXT, 0L);
    // What the server says about a file without a transfer (its size) is not the file's data.
    handle.set(CURLOPT_WRITEFUNCTION, &discard);
    if (account.passive) {
        handle.set(CURLOPT_FTP_USE_EPSV, 1L);
    } else {
        handle.set(CURLOPT_FTPPORT, "-");
    }
}

std::optional<std::string> refusal(const CurlHandle& handle) {
    auto reply = lastReply(handle.dialogue().replies());
    if (reply && (reply->front() == '4' || reply->front() == '5')) return reply;
    return std::nullopt;
}

std::string failure(const CurlHandle& handle, CURLcode code) {
    return refusal(handle).value_or(handle.errorText(code));
}

}  // namespace stowhaven::FtpRequest
