// A web server in a thread of the benchmark, on the loopback: every location is the same number of bytes.
#pragma once

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>
#include <winsock2.h>

namespace corvix::bench {

class LoopbackServer {
 public:
  explicit LoopbackServer(std::uint32_t bodyBytes) : bodyBytes_(bodyBytes) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int length = sizeof address;
    bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
    listen(listener_, 8);
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { run(); });
  }
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer() {
    closesocket(listener_);
    acceptor_.join();
    for (std::thread& each : connections_) each.join();
    WSACleanup();
  }

  std::wstring location() const { return L"http://127.0.0.1:" + std::to_wstring(port_) + L"/"; }

 private:
  void run() {
    for (;;) {
      const SOCKET connection = accept(listener_, nullptr, nullptr);
      if (connection == INVALID_SOCKET) return;
      connections_.emplace_back([this, connection] { serve(connection); });
    }
  }

  void serve(SOCKET connection) const {
    std::string request;
    char piece[2048];
    while (request.find("\r\n\r\n") == std::string::npos) {
      const int got = recv(connection, piece, sizeof piece, 0);
      if (got <= 0) break;
      request.append(piece, static_cast<std::size_t>(got));
    }
    const std::string head =
        "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(bodyBytes_) + "\r\n\r\n";
    bool isThere = send(connection, head.data(), static_cast<int>(head.size()), 0) > 0;
    const std::vector<char> block(64 * 1024, 'x');
    for (std::uint32_t left = bodyBytes_; left > 0 && isThere;) {
      const int count = static_cast<int>(left < block.size() ? left : block.size());
      const int sent = send(connection, block.data(), count, 0);
      isThere = sent > 0;
      left -= isThere ? static_cast<std::uint32_t>(sent) : 0;
    }
    closesocket(connection);
  }

  std::uint32_t bodyBytes_;
  SOCKET listener_;
  unsigned short port_ = 0;
  std::thread acceptor_;
  std::vector<std::thread> connections_;
};

}  // namespace corvix::bench
