#include "net/CurlHandle.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <string_view>

namespace stowhaven {

namespace {

// The longest wait for the sockets between two turns of the transfer. libcurl may have
// nothing to wait on for a moment (an FTP data connection it is about to open): it would
// then sleep a whole second in its own loop.
constexpr int kLongestPollMilliseconds = 10;

void initialiseOnce() {
    static std::once_flag initialised;
    std::call_once(initialised, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

template <typename Handle>
Handle* created(Handle* handle) {
    if (handle == nullptr) throw std::bad_alloc();
    return handle;
}

}  // namespace

CurlHandle::CurlHandle() {
    initialiseOnce();
    multi_ = created(curl_multi_init());
    handle_ = created(curl_easy_init());
    reset();
}

CurlHandle::~CurlHandle() {
    curl_easy_cleanup(handle_);
    curl_multi_cleanup(multi_);
}

void CurlHandle::reset() {
    curl_easy_reset(handle_);
    set(CURLOPT_ERRORBUFFER, errorBuffer_);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_DEBUGFUNCTION, &CurlHandle::onDebug);
    set(CURLOPT_DEBUGDATA, this);
    set(CURLOPT_VERBOSE, 1L);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_XFERINFOFUNCTION, &CurlHandle::onProgress);
    set(CURLOPT_XFERINFODATA, this);
    set(CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, kStalledSeconds);
}

CURLcode CurlHandle::perform(TransferProgress* progress) {
    errorBuffer_[0] = '\0';
    dialogue_.clear();
    if (progress != nullptr && progress->abortRequested) return CURLE_ABORTED_BY_CALLBACK;
    progress_ = progress;
    CURLcode code = CURLE_FAILED_INIT;
    if (curl_multi_add_handle(multi_, handle_) == CURLM_OK) {
        int running = 1;
        while (running > 0 && curl_multi_perform(multi_, &running) == CURLM_OK) {
            if (running > 0) curl_multi_poll(multi_, nullptr, 0, kLongestPollMilliseconds, nullptr);
        }
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
            if (message->msg == CURLMSG_DONE) code = message->data.result;
        }
        curl_multi_remove_handle(multi_, handle_);
    }
    progress_ = nullptr;
    return code;
}

void CurlHandle::closeConnections() {
    curl_easy_cleanup(handle_);
    curl_multi_cleanup(multi_);
    multi_ = created(curl_multi_init());
    handle_ = created(curl_easy_init());
    reset();
}

std::string CurlHandle::errorText(CURLcode code) const {
    return dialogue_.clean(errorBuffer_[0] != '\0' ? errorBuffer_ : curl_easy_strerror(code));
}

int CurlHandle::onDebug(CURL*, curl_infotype type, char* data, std::size_t size, void* self) {
    auto& dialogue = static_cast<CurlHandle*>(self)->dialogue_;
    if (type == CURLINFO_HEADER_IN) dialogue.received(std::string_view(data, size));
    if (type == CURLINFO_HEADER_OUT) dialogue.sent(std::string_view(data, size));
    return 0;
}

int CurlHandle::onProgress(void* self, curl_off_t downloadTotal, curl_off_t downloaded, curl_off_t uploadTotal,
                           curl_off_t uploaded) {
    auto& handle = *static_cast<CurlHandle*>(self);
    TransferProgress* progress = handle.progress_;
    if (progress == nullptr) return 0;
    progress->bytesDone = std::max(downloaded, uploaded);
    progress->bytesExpected = std::max(downloadTotal, uploadTotal);
    curl_off_t downloadSpeed = 0;
    curl_off_t uploadSpeed = 0;
    curl_easy_getinfo(handle.handle_, CURLINFO_SPEED_DOWNLOAD_T, &downloadSpeed);
    curl_easy_getinfo(handle.handle_, CURLINFO_SPEED_UPLOAD_T, &uploadSpeed);
    progress->bytesPerSecond = static_cast<double>(std::max(downloadSpeed, uploadSpeed));
    return progress->abortRequested ? 1 : 0;
}

}  // namespace stowhaven
