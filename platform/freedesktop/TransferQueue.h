#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vendril {

/// Decides which transfer gets the next free socket. Transfers to one origin start in the order of
/// their arrival; the origins take turns. The sockets are bounded in all and for each origin, and
/// no origin takes a socket when it holds as many as there are free ones: however many portals are
/// slow or dead, some sockets are left for the next one. Belongs to one thread.
template <class Transfer>
class TransferQueue {
 public:
  TransferQueue(std::size_t maxSockets, std::size_t maxSocketsPerOrigin)
      : free_(maxSockets), maxPerOrigin_(maxSocketsPerOrigin) {}

  void add(const std::string& origin, Transfer transfer) {
    const auto [entry, isNew] = origins_.try_emplace(origin);
    if (entry->second.waiting.empty()) {
      turns_.push_back(entry->first);
    }
    entry->second.waiting.push_back(std::move(transfer));
  }

  /// Takes a socket for the transfer whose turn it is; nothing when none may start now.
  std::optional<Transfer> startNext() {
    const auto turn = std::find_if(turns_.begin(), turns_.end(), [this](const std::string& origin) {
      return mayStart(origins_.at(origin));
    });
    if (turn == turns_.end()) {
      return std::nullopt;
    }
    Origin& origin = origins_.at(*turn);
    std::optional<Transfer> transfer(std::move(origin.waiting.front()));
    origin.waiting.pop_front();
    ++origin.sockets;
    --free_;
    if (origin.waiting.empty()) {
      turns_.erase(turn);
    } else {
      turns_.splice(turns_.end(), turns_, turn);
    }
    return transfer;
  }

  /// Gives back the socket of a transfer to `origin` that was started.
  void finished(const std::string& origin) {
    const auto entry = origins_.find(origin);
    --entry->second.sockets;
    ++free_;
    if (entry->second.sockets == 0 && entry->second.waiting.empty()) {
      origins_.erase(entry);
    }
  }

  /// True when transfers wait for a socket.
  bool isWaiting() const { return !turns_.empty(); }

 private:
  struct Origin {
    std::deque<Transfer> waiting;
    std::size_t sockets = 0;
  };

  bool mayStart(const Origin& origin) const {
    return origin.sockets < std::min(maxPerOrigin_, free_);
  }

  std::size_t free_;
  std::size_t maxPerOrigin_;
  std::map<std::string, Origin> origins_;
  /// The origins with waiting transfers, the one whose turn is next first.
  std::list<std::string> turns_;
};

}  // namespace vendril
