#pragma once

#include "net/CurlDialogue.h"
#include "net/TransferProgress.h"

#include <curl/curl.h>

#include <string>

namespace stowhaven {

// One libcurl easy handle, the connections it keeps open between calls, and what each call
// shares: the dialogue record, curl's own error text, time-outs, progress and abort. A
// call starts from reset(), sets its options and runs perform(); one call at a time.
class CurlHandle {
public:
    // Longest wait for a connection, and for a transfer that moves less than a byte a second.
    static constexpr long kConnectSeconds = 15;
    static constexpr long kStalledSeconds = 30;

    CurlHandle();
    ~CurlHandle();
    CurlHandle(const CurlHandle&) = delete;
    CurlHandle& operator=(const CurlHandle&) = delete;

    // Text masked in everything recorded or reported (the password).
    void setSecret(std::string secret) { dialogue_.setSecret(std::move(secret)); }

    // Forgets the last call's options, keeping the open connections, and sets the shared ones.
    void reset();
    template <typename Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(handle_, option, value);
    }
    CURL* get() const { return handle_; }
    // Runs the call; PROGRESS, when given, follows it and can abort it.
    CURLcode perform(TransferProgress* progress = nullptr);
    // Closes the connections (an FTP server gets its QUIT) and starts afresh.
    void closeConnections();

    const CurlDialogue& dialogue() const { return dialogue_; }
    // curl's account of a failed call, one printable line, the secret masked.
    std::string errorText(CURLcode code) const;

private:
    static int onDebug(CURL*, curl_infotype type, char* data, std::size_t size, void* self);
    static int onProgress(void* self, curl_off_t downloadTotal, curl_off_t downloaded, curl_off_t uploadTotal,
                          curl_off_t uploaded);

    // The handle runs in a multi handle of its own, which keeps its connections.
    CURLM* multi_ = nullptr;
    CURL* handle_ = nullptr;
    char errorBuffer_[CURL_ERROR_SIZE] = {};
    CurlDialogue dialogue_;
    TransferProgress* progress_ = nullptr;
};

}  // namespace stowhaven
