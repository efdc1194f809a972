// Receives the RTP stream that a requester set up, on the port or the
// multicast group its notification names, and counts what arrives. It
// owns one UDP socket on a thread of its own; the notification only tells
// it where to listen, and never waits for it.
#ifndef CAMREQ_RTP_RECEIVER_H
#define CAMREQ_RTP_RECEIVER_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace camreq {

struct RtpStats {
  uint64_t ulPackets = 0;  // RTP packets (version 2)
  uint64_t ulBytes = 0;    // their datagram bytes
  uint64_t ulOther = 0;    // datagrams that are no RTP packet
  uint64_t ulLost = 0;     // sequence numbers skipped
  uint64_t ulFrames = 0;   // packets with the marker bit (ends of frames)
  int iPayloadType = -1;   // of the last packet
  uint32_t ulSsrc = 0;
  double dFirst = -1;       // time of the first packet, -1: none yet
  double dLast = -1;        // time of the last packet
  bool bFollowing = false;  // a stream is announced and listened for
  double dFollowed = -1;    // when the announcement came
  std::string sGroup;       // multicast group, empty for unicast
  int iPort = 0;            // the port listened on
  std::string sError;       // why the announced place could not be listened on
  // Silences of more than a second between two packets: start and length.
  std::vector<std::pair<double, double>> asGaps;
  std::string sSps;  // the last H.264 sequence and picture parameter sets
  std::string sPps;
};

class RtpReceiver {
 public:
  RtpReceiver() = default;
  ~RtpReceiver() { Stop(); }
  RtpReceiver(const RtpReceiver&) = delete;
  RtpReceiver& operator=(const RtpReceiver&) = delete;

  // Opens the receive socket before the start, so that the port exists
  // when the camera sends its first packet; iPort 0 takes a free even port.
  // sInterface is this side's address for the camera (127.0.0.1, ::1,
  // 0.0.0.0 or ::): it binds unicast and joins groups there.
  bool Open(const std::string& sInterface, int iPort, std::string* psError);
  int Port() const { return m_iOpenPort; }
  // Also sends every packet to this loopback port (a player's), 0: none.
  void ForwardTo(int iPort) { m_iForwardPort = iPort; }
  void Start();
  void Stop();

  // The stream will come to this group (empty: unicast) and port.
  void Follow(const std::string& sGroup, int iPort);
  // The stream is gone (UID -1): stop listening.
  void Drop();

  RtpStats Snapshot() const;
  // 0 while packets come, 1 once a second passed without any (counted
  // from the announcement before the first packet); 1 when nothing is
  // announced.
  int StreamState(double dNow) const;

 private:
  void Loop();
  void Apply();
  void ReceiveAll(int iFd);
  void Count(const unsigned char* pucData, size_t ulLength, double dNow);
  void Forward(const unsigned char* pucData, size_t ulLength);
  int OpenSocket(const std::string& sGroup, int iPort, std::string* psError);
  void Wake();

  mutable std::mutex m_mutex;  // guards m_stats and the wanted place
  RtpStats m_stats;
  std::string m_sWantGroup;
  int m_iWantPort = 0;
  bool m_bWant = false;
  uint64_t m_ulWantGeneration = 0;
  uint64_t m_ulAppliedGeneration = 0;
  int m_iLastSeq = -1;

  std::string m_sInterface;
  int m_iFamily = 0;
  int m_iOpenPort = 0;
  int m_iFd = -1;          // the socket listened on (the loop's own once started)
  std::string m_sFdGroup;  // what m_iFd is bound to
  int m_iFdPort = 0;
  int m_iWakeFd = -1;
  std::atomic<int> m_iForwardPort{0};
  int m_iForwardFd = -1;
  std::atomic<bool> m_bRun{false};
  std::thread m_thread;
};

}  // namespace camreq

#endif
