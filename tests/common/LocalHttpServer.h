// A small HTTP server on 127.0.0.1 for the online look-ups' tests: it answers GET requests from
// a table of paths (status and body), 404 for anything else, and keeps what it was asked.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace plattmix::test {

class LocalHttpServer {
  public:
    struct Answer {
        int status = 200;
        std::string body;
        std::chrono::milliseconds delay{0};  // before the answer: for time-outs
    };

    LocalHttpServer() {
        listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(listener_, 8) != 0 ||
            ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
            return;
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { Serve(); });
    }
    ~LocalHttpServer() {
        running_ = false;
        if (thread_.joinable())
            thread_.join();
        ::close(listener_);
    }
    LocalHttpServer(const LocalHttpServer&) = delete;
    LocalHttpServer& operator=(const LocalHttpServer&) = delete;

    // "http://127.0.0.1:port/"; 0 as the port when the server could not start.
    std::string Url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

    // path starts with "/" and includes the query, as the client sends it.
    void Set(const std::string& path, Answer answer) {
        std::lock_guard lock(mutex_);
        answers_[path] = std::move(answer);
    }

    // The request heads received so far, oldest first.
    std::vector<std::string> Requests() const {
        std::lock_guard lock(mutex_);
        return requests_;
    }

  private:
    void Serve() {
        while (running_) {
            pollfd waiting{listener_, POLLIN, 0};
            if (::poll(&waiting, 1, 20) <= 0)
                continue;
            const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (client >= 0) {
                Reply(client);
                ::close(client);
            }
        }
    }

    void Reply(int client) {
        std::string head;
        char chunk[4096];
        while (head.find("\r\n\r\n") == std::string::npos) {
            const ssize_t got = ::recv(client, chunk, sizeof chunk, 0);
            if (got <= 0)
                return;
            head.append(chunk, static_cast<size_t>(got));
        }
        const size_t start = head.find(' ') + 1;
        const std::string path = head.substr(start, head.find(' ', start) - start);
        LocalHttpServer::Answer answer{404, "Not Found", {}};
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(head);
            if (const auto it = answers_.find(path); it != answers_.end())
                answer = it->second;
        }
        std::this_thread::sleep_for(answer.delay);
        const std::string reply = "HTTP/1.1 " + std::to_string(answer.status) +
                                  " X\r\nContent-Length: " + std::to_string(answer.body.size()) +
                                  "\r\nConnection: close\r\n\r\n" + answer.body;
        for (size_t sent = 0; sent < reply.size();) {
            const ssize_t put =
                ::send(client, reply.data() + sent, reply.size() - sent, MSG_NOSIGNAL);
            if (put <= 0)
                return;
            sent += static_cast<size_t>(put);
        }
    }

    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> running_{true};
    mutable std::mutex mutex_;
    std::map<std::string, LocalHttpServer::Answer> answers_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

}  // namespace plattmix::test
