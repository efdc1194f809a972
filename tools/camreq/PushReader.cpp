#include "PushReader.h"

#include <cstdio>
#include <utility>

#include "Record.h"
#include "StreamState.h"

namespace camreq {

namespace {
// One read waits at most this long, so that a withdrawal is answered soon.
constexpr int kReadSliceMs = 100;
constexpr size_t kAudioChunk = 4096;
}  // namespace

bool IsWholeJpeg(const unsigned char* pucData, size_t ulLength) {
  return ulLength >= 4 && pucData[0] == 0xFF && pucData[1] == 0xD8 &&
         pucData[ulLength - 2] == 0xFF && pucData[ulLength - 1] == 0xD9;
}

PushReader::PushReader(bool bJpeg, std::string sSaveDir, std::string sStem)
    : m_bJpeg(bJpeg), m_sSaveDir(std::move(sSaveDir)), m_sStem(std::move(sStem)) {}

void PushReader::Take(HTTP_SESSION* psHandle) {
  LetGo(false);
  std::lock_guard<std::mutex> lock(m_mutex);
  ++m_stats.iHandOvers;
  m_stats.bHeld = true;
  m_stats.dTaken = Now();
  m_bStop = false;
  m_reader = std::thread(&PushReader::Loop, this, psHandle);
}

void PushReader::LetGo(bool bWithdrawn) {
  std::thread reader;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bStop = true;
    reader = std::move(m_reader);
    if (bWithdrawn) ++m_stats.iWithdrawals;
  }
  if (reader.joinable()) reader.join();
  std::lock_guard<std::mutex> lock(m_mutex);
  m_stats.bHeld = false;
}

PushStats PushReader::Snapshot() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_stats;
}

int PushReader::StreamState(double dNow) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return StreamStateAt(m_stats.bHeld, m_stats.dTaken, m_stats.dLast, dNow);
}

void PushReader::Loop(HTTP_SESSION* psHandle) {
  while (!m_bStop && ReadOnce(psHandle)) {
  }
}

// One read slice; false once the push has ended.
bool PushReader::ReadOnce(HTTP_SESSION* psHandle) {
  uint32_t ulRet = 0;
  if (m_bJpeg) {
    HTTP_PUSH_PART sPart{};
    ulRet = http_push_next_part(psHandle, &sPart, kReadSliceMs);
    if (ulRet == 0) {
      const bool bWhole = IsWholeJpeg(sPart.pucData, sPart.ulLength);
      if (bWhole) Save(sPart.pucData, sPart.ulLength);
      std::lock_guard<std::mutex> lock(m_mutex);
      ++(bWhole ? m_stats.ulPictures : m_stats.ulBadParts);
      m_stats.ulBytes += sPart.ulLength;
      m_stats.dLast = Now();
      if (m_stats.dFirst < 0) m_stats.dFirst = m_stats.dLast;
      return true;
    }
  } else {
    unsigned char aucData[kAudioChunk];
    size_t ulRead = 0;
    ulRet = http_push_read(psHandle, aucData, sizeof(aucData), &ulRead, kReadSliceMs);
    if (ulRet == 0) {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_stats.ulBytes += ulRead;
      m_stats.dLast = Now();
      if (m_stats.dFirst < 0) m_stats.dFirst = m_stats.dLast;
      return true;
    }
  }
  if (ulRet == HTTP_ERR_TIMEOUT) return true;
  // The push ended; the handle stays the requester's to close.
  std::lock_guard<std::mutex> lock(m_mutex);
  ++m_stats.iEnds;
  m_stats.ulEndCode = ulRet;
  return false;
}

void PushReader::Save(const unsigned char* pucData, size_t ulLength) {
  if (m_sSaveDir.empty()) return;
  uint64_t ulNumber = 0;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    ulNumber = m_stats.ulPictures + 1;
  }
  char acName[64];
  std::snprintf(acName, sizeof(acName), "-%06llu.jpg", static_cast<unsigned long long>(ulNumber));
  const std::string sPath = m_sSaveDir + "/" + m_sStem + acName;
  std::FILE* pFile = std::fopen(sPath.c_str(), "wb");
  bool bWritten = pFile != nullptr && std::fwrite(pucData, 1, ulLength, pFile) == ulLength;
  if (pFile != nullptr) bWritten = std::fclose(pFile) == 0 && bWritten;
  std::lock_guard<std::mutex> lock(m_mutex);
  if (bWritten) {
    ++m_stats.ulSaved;
  } else if (m_stats.sSaveError.empty()) {
    m_stats.sSaveError = "cannot write " + sPath;
  }
}

}  // namespace camreq
