// A device's worth of requesters at once: 262 RTP and HTTP requesters of
// cameras, a Quillon camera and a KEL recorder, each simulated by one camsim
// device on loopback, driven through their public operations as the media
// process drives them. Besides the statuses the fleet accounts for what a
// requester leaves in the process (descriptors, threads, message buffers,
// heap) and for what it tells other processes (UID messages, alarms).
#ifndef LOAD_FLEET_H
#define LOAD_FLEET_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "CCamRequester.h"
#include "CamRequesterFields.h"
#include "Device.h"
#include "PushReaderNotify.h"
#include "UpperLayer.h"

namespace loadtest {

using std::chrono::milliseconds;

// What a process holds that a requester could leave behind.
struct Resources {
  int iFds = 0;
  int iThreads = 0;
  int iBuffers = 0;       // KXCOM message buffers made and not freed
  long long llHeap = -1;  // bytes of heap in use; -1 where it cannot be read
};
Resources Snapshot();
// The snapshot once the HTTP client has let go of the sessions closed last.
// It keeps a closed session's record and the last part it delivered for
// 10 s after the close, since a reader on another thread may still hold
// them, and lets go of them at a later close: the heap right after a cycle
// holds up to 10 s of its closes. This waits out that time, opens and
// closes one session of its own on loopback, and then takes the snapshot.
Resources SettledSnapshot();
std::string Describe(const Resources& s);

// The requesters of a device number in the hundreds, each with a request
// thread and sockets: the soft limit of open files goes up to the hard one.
void RaiseFileLimit();

// The devices of the fleet.
enum class Dev { kCamera, kMpeg4Camera, kQuillon, kRecorder, kCount };

// One kind of requester of the fleet.
struct FleetRoad {
  const char* pcName;
  Dev eDevice;
  bool bHttp;  // CCamRequester_Cgi_Kobu_Http, else _Rtp
  int iCmdType;
};

// The fleet's members take these roads in turn.
extern const FleetRoad kFleetRoads[6];

// The paths of each device that a soak may fault.
std::vector<std::string> PathsOf(Dev eDevice);

struct Member {
  int iNumber = 0;  // 1..262: the camera number of its alarms and UID message
  const FleetRoad* psRoad = nullptr;
  std::unique_ptr<camtest::NotifyRecorder> pRtpNotify;
  std::unique_ptr<httptest::PushReaderNotify> pPushNotify;
  std::unique_ptr<CCamRequester> pReq;
  const CamRequesterFields* pFields = nullptr;        // the same requester's fields
  int iPos() const { return (iNumber - 1) % 6 + 1; }  // the positions that count errors
  int Status() const { return pReq->iConnectStatus.load(); }
};

// Every COM_printf text is counted and dropped: hundreds of requesters
// print a few lines per exchange.
class PrintCounter {
 public:
  PrintCounter();
  ~PrintCounter();
  PrintCounter(const PrintCounter&) = delete;
  PrintCounter& operator=(const PrintCounter&) = delete;
  uint64_t Count() const { return m_ulCount.load(); }

 private:
  static void Sink(const char* pcText, void* pvContext);
  std::atomic<uint64_t> m_ulCount{0};
};

class Fleet {
 public:
  // iWaitDivisor shortens the idle rounds,
  // iHttpDivisor the time-outs of an exchange.
  Fleet(int iMembers, int iWaitDivisor, int iHttpDivisor);
  ~Fleet();
  Fleet(const Fleet&) = delete;
  Fleet& operator=(const Fleet&) = delete;

  bool Started() const { return m_bStarted; }
  camsim::Device& Device(Dev e) { return *m_apDevices[static_cast<size_t>(e)]; }
  std::vector<Member>& Members() { return m_asMembers; }

  // Each cycle has devices of its own, so that what a device keeps (the
  // UIDs it issued) is no growth of the process from cycle to cycle.
  void StartDevices();
  void StopDevices();
  // Creates, configures and initialises every requester.
  void Create();
  void StartAll();
  void StopAll();
  // Stops the upper layer's readers and destroys every requester.
  void Destroy();
  // Waits until every member is in iStatus; the members that are not, by
  // number and status, in *psLate.
  bool WaitAll(int iStatus, milliseconds tLimit, std::string* psLate);
  // Waits until every member's device received two keep-alives (the one
  // that ends the START and one of the idle rounds) for the UID the member
  // holds now, counted from the last ForgetKeepAlives.
  bool WaitKeepAlives(milliseconds tLimit, std::string* psLate);
  void ForgetKeepAlives();
  // Clears every fault and opens every listener again.
  void Heal();

  // The UID messages received so far, by camera number: their flags in
  // order. Message payloads of an unknown member or a wrong position are
  // reported in *psStray.
  std::map<int, std::vector<int>> DrainUidMessages(std::string* psStray);
  // Alarm codes of each camera number since the last ForgetAlarms, in
  // order; reports that belong to no member in *psStray.
  std::map<int, std::vector<int>> AlarmsByCamera(std::string* psStray) const;
  void ForgetAlarms() { m_alarms.Clear(); }

 private:
  void ObserveKeepAlives(Dev e);

  int m_iMembers;
  bool m_bStarted = false;
  std::vector<std::unique_ptr<camsim::Device>> m_apDevices;
  std::vector<Member> m_asMembers;
  std::unique_ptr<camtest::UidReceiver> m_pUids;
  camtest::AlarmCapture m_alarms;
  mutable std::mutex m_mutex;
  std::map<Dev, std::map<int, int>> m_kept;  // keep-alives of each UID, by device
  long m_lNextIndex = 1000;
};

}  // namespace loadtest

#endif  // LOAD_FLEET_H
