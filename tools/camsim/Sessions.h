// The UIDs a device has handed out and the login keys a recorder has
// offered. Not locked: the device guards it with its own mutex.
#ifndef CAMSIM_SESSIONS_H
#define CAMSIM_SESSIONS_H

#include <deque>
#include <random>
#include <set>
#include <string>

namespace camsim {

class Sessions {
 public:
  explicit Sessions(int firstUid);

  int IssueUid();
  bool Known(int uid) const;
  // Forgets the UID; false when it was not known.
  bool Release(int uid);
  void ReleaseAll();
  std::set<int> Live() const { return live_; }
  void SetNextUid(int uid) { next_ = uid; }

  // A fresh recorder key of six letters and digits.
  std::string OfferKey();
  // Takes back an offered key (each serves one login); false if it was not offered.
  bool TakeKey(const std::string& key);
  // The key offered last and not yet taken, or "" when none.
  std::string LatestKey() const;

 private:
  int next_;
  std::set<int> live_;
  std::deque<std::string> keys_;
  std::mt19937 random_;
};

}  // namespace camsim

#endif
