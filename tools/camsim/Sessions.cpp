#include "Sessions.h"

#include <algorithm>
#include <iterator>

namespace camsim {

namespace {
constexpr size_t kKeyLength = 6;
constexpr size_t kKeysKept = 1024;
constexpr char kKeyAlphabet[] = "ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz23456789";
}  // namespace

Sessions::Sessions(int firstUid) : next_(firstUid), random_(std::random_device{}()) {}

int Sessions::IssueUid() {
  while (live_.count(next_) != 0 || next_ < 0) next_ = next_ < 0 ? 0 : next_ + 1;
  int uid = next_++;
  live_[uid] = Clock::now();
  return uid;
}

bool Sessions::Known(int uid) const {
  return live_.count(uid) != 0;
}

bool Sessions::Release(int uid) {
  return live_.erase(uid) != 0;
}

void Sessions::ReleaseAll() {
  live_.clear();
}

std::set<int> Sessions::Live() const {
  std::set<int> uids;
  for (const auto& entry : live_) uids.insert(entry.first);
  return uids;
}

bool Sessions::Refresh(int uid) {
  auto found = live_.find(uid);
  if (found == live_.end()) return false;
  found->second = Clock::now();
  return true;
}

void Sessions::ExpireStale() {
  if (expiry_.count() <= 0) return;
  Clock::time_point oldest = Clock::now() - expiry_;
  for (auto it = live_.begin(); it != live_.end();) {
    it = it->second < oldest ? live_.erase(it) : std::next(it);
  }
}

std::string Sessions::OfferKey() {
  std::uniform_int_distribution<size_t> pick(0, sizeof kKeyAlphabet - 2);
  std::string key;
  do {
    key.clear();
    for (size_t i = 0; i < kKeyLength; ++i) key += kKeyAlphabet[pick(random_)];
  } while (std::find(keys_.begin(), keys_.end(), key) != keys_.end());
  keys_.push_back(key);
  if (keys_.size() > kKeysKept) keys_.pop_front();
  return key;
}

bool Sessions::TakeKey(const std::string& key) {
  auto found = std::find(keys_.begin(), keys_.end(), key);
  if (found == keys_.end()) return false;
  keys_.erase(found);
  return true;
}

std::string Sessions::LatestKey() const {
  return keys_.empty() ? "" : keys_.back();
}

}  // namespace camsim
