#include "CurlHttpGet.h"

#include <curl/curl.h>

#include <memory>
#include <mutex>

namespace plattmix::audiocd {
namespace {

struct CurlFree {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using CurlHandle = std::unique_ptr<CURL, CurlFree>;

// libcurl's global set-up is not thread-safe: done once, before the first transfer.
void InitOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

struct Transfer {
    const HttpRequest* request = nullptr;
    std::string body;
    bool tooLong = false;
};

size_t Collect(char* data, size_t size, size_t count, void* user) {
    auto* transfer = static_cast<Transfer*>(user);
    const size_t bytes = size * count;
    if (transfer->body.size() + bytes > transfer->request->maxBytes) {
        transfer->tooLong = true;
        return 0;  // ends the transfer with a write error
    }
    transfer->body.append(data, bytes);
    return bytes;
}

int Progress(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    const auto* transfer = static_cast<Transfer*>(user);
    return transfer->request->stop && transfer->request->stop() ? 1 : 0;
}

std::string FailureText(CURLcode code, const Transfer& transfer, const char* detail) {
    if (transfer.tooLong)
        return "Die Antwort des Servers ist zu lang.";
    if (code == CURLE_ABORTED_BY_CALLBACK)
        return "Abgebrochen.";
    if (code == CURLE_OPERATION_TIMEDOUT)
        return "Der Server antwortet nicht (Zeitüberschreitung).";
    std::string text = "Keine Verbindung zum Server: ";
    text += detail[0] != '\0' ? detail : curl_easy_strerror(code);
    return text;
}

}  // namespace

HttpReply CurlHttpGet(const HttpRequest& request) {
    InitOnce();
    HttpReply reply;
    const CurlHandle curl(curl_easy_init());
    if (!curl) {
        reply.error = "Die Netzwerkbibliothek lässt sich nicht starten.";
        return reply;
    }
    Transfer transfer;
    transfer.request = &request;
    char detail[CURL_ERROR_SIZE] = {};
    CURL* handle = curl.get();
    curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(handle, CURLOPT_USERAGENT, request.userAgent.c_str());
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_MAXREDIRS, 5L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, detail);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, Collect);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, Progress);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &transfer);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    const CURLcode code = curl_easy_perform(handle);
    if (code != CURLE_OK) {
        reply.error = FailureText(code, transfer, detail);
        return reply;
    }
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &reply.status);
    reply.body = std::move(transfer.body);
    return reply;
}

}  // namespace plattmix::audiocd
