#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace stowhaven {

// What a client and a server said to each other during one call: the lines the server sent
// and the commands the client sent, each as one printable line with the secret masked.
// Credentials never enter it: a "PASS" command or an "Authorization" header is left out.
class CurlDialogue {
public:
    void setSecret(std::string secret) { secret_ = std::move(secret); }
    // Forgets the previous call.
    void clear();
    void received(std::string_view text);
    void sent(std::string_view text);

    // The server's lines of this call, oldest first.
    const std::deque<std::string>& replies() const { return replies_; }
    // The last lines both ways, "< " for the server's and "> " for the client's, for a log.
    std::string tail() const;
    // TEXT as one line that can be shown: the secret masked, control characters as blanks.
    std::string clean(std::string_view text) const;

private:
    void append(std::deque<std::string>& lines, std::string line);

    std::string secret_;
    std::deque<std::string> replies_;
    std::deque<std::string> both_;
};

}  // namespace stowhaven
