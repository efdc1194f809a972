// The UIDs a device has handed out and the login keys a recorder has
// offered. Not locked: the device guards it with its own mutex.
#ifndef CAMSIM_SESSIONS_H
#define CAMSIM_SESSIONS_H

#include <chrono>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <string>

namespace camsim {

class Sessions {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Sessions(int firstUid);

  int IssueUid();
  bool Known(int uid) const;
  // Forgets the UID; false when it was not known.
  bool Release(int uid);
  void ReleaseAll();
  std::set<int> Live() const;
  void SetNextUid(int uid) { next_ = uid; }

  // A UID that no keep-alive refreshed for this long is forgotten (zero:
  // never). Issuing a UID counts as its first refresh.
  void SetExpiry(std::chrono::milliseconds expiry) { expiry_ = expiry; }
  std::chrono::milliseconds Expiry() const { return expiry_; }
  // A keep-alive for a known UID; false when it is not known.
  bool Refresh(int uid);
  // Forgets every UID whose last refresh is older than the expiry.
  void ExpireStale();

  // A fresh recorder key of six letters and digits.
  std::string OfferKey();
  // Takes back an offered key (each serves one login); false if it was not offered.
  bool TakeKey(const std::string& key);
  // The key offered last and not yet taken, or "" when none.
  std::string LatestKey() const;

 private:
  int next_;
  std::map<int, Clock::time_point> live_;  // UID, its last refresh
  std::chrono::milliseconds expiry_{0};
  std::deque<std::string> keys_;
  std::mt19937 random_;
};

}  // namespace camsim

#endif
