// Reads the server push that the HTTP requester hands over: the JPEG
// pictures part by part, or the G.726 bytes. It reads on a thread of its
// own, in slices short enough that taking the handle back waits little,
// and never touches the handle once it has been let go.
#ifndef CAMREQ_PUSH_READER_H
#define CAMREQ_PUSH_READER_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "kxhttp.h"

namespace camreq {

struct PushStats {
  uint64_t ulPictures = 0;  // whole JPEG pictures
  uint64_t ulBadParts = 0;  // parts that are no whole JPEG picture
  uint64_t ulBytes = 0;     // picture or audio bytes
  uint64_t ulSaved = 0;     // pictures written with --save-frames
  int iHandOvers = 0;
  int iWithdrawals = 0;
  int iEnds = 0;           // pushes that ended while held
  uint32_t ulEndCode = 0;  // the read result that ended the last one
  bool bHeld = false;
  double dTaken = -1;  // when the handle last came
  double dFirst = -1;
  double dLast = -1;  // last picture or audio bytes
  std::string sSaveError;
};

class PushReader {
 public:
  // bJpeg: pictures, else audio bytes. sSaveDir: where pictures go (empty:
  // nowhere); sStem begins their file names.
  PushReader(bool bJpeg, std::string sSaveDir, std::string sStem);
  ~PushReader() { LetGo(false); }
  PushReader(const PushReader&) = delete;
  PushReader& operator=(const PushReader&) = delete;

  // A handle is handed over: read it (after letting go of one still held).
  void Take(HTTP_SESSION* psHandle);
  // The handle is withdrawn (bWithdrawn) or camreq itself gives up reading:
  // returns once the reader thread has left every call on the handle.
  void LetGo(bool bWithdrawn);

  PushStats Snapshot() const;
  // 0 while pictures or bytes come, 1 a second after the last (or after
  // the hand-over, before the first); 1 when no handle is held.
  int StreamState(double dNow) const;

 private:
  void Loop(HTTP_SESSION* psHandle);
  bool ReadOnce(HTTP_SESSION* psHandle);
  void Save(const unsigned char* pucData, size_t ulLength);

  const bool m_bJpeg;
  const std::string m_sSaveDir;
  const std::string m_sStem;
  mutable std::mutex m_mutex;  // guards m_stats and m_reader
  PushStats m_stats;
  std::atomic<bool> m_bStop{false};
  std::thread m_reader;
};

bool IsWholeJpeg(const unsigned char* pucData, size_t ulLength);

}  // namespace camreq

#endif
