#include "CamTestSupport.h"

#include <dirent.h>

#include <algorithm>

#include "kxcom.h"

namespace camtest {

PrintCapture::PrintCapture() {
  COM_SetPrintSink(&PrintCapture::Sink, this);
}

PrintCapture::~PrintCapture() {
  COM_SetPrintSink(nullptr, nullptr);
}

void PrintCapture::Sink(const char* pcText, void* pvContext) {
  auto* self = static_cast<PrintCapture*>(pvContext);
  {
    std::lock_guard<std::mutex> lock(self->m_mutex);
    self->m_lines.emplace_back(pcText);
  }
  self->m_changed.notify_all();
}

std::vector<std::string> PrintCapture::Lines() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_lines;
}

std::string PrintCapture::All() const {
  std::string sAll;
  for (const auto& s : Lines()) sAll += s;
  return sAll;
}

void PrintCapture::Clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_lines.clear();
}

int PrintCapture::Count(const std::string& sText) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return static_cast<int>(std::count(m_lines.begin(), m_lines.end(), sText));
}

int PrintCapture::CountContaining(const std::string& sPart) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return static_cast<int>(std::count_if(m_lines.begin(), m_lines.end(), [&](const std::string& s) {
    return s.find(sPart) != std::string::npos;
  }));
}

bool PrintCapture::WaitFor(const std::string& sPart, std::chrono::milliseconds tLimit) const {
  return WaitForCount(sPart, 1, tLimit);
}

bool PrintCapture::WaitForCount(const std::string& sPart, int iCount,
                                std::chrono::milliseconds tLimit) const {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, Scaled(tLimit), [&] {
    int n = 0;
    for (const auto& s : m_lines) n += (s.find(sPart) != std::string::npos) ? 1 : 0;
    return n >= iCount;
  });
}

bool WaitUntil(const std::function<bool()>& fnCondition, std::chrono::milliseconds tLimit) {
  const auto tEnd = std::chrono::steady_clock::now() + Scaled(tLimit);
  while (!fnCondition()) {
    if (std::chrono::steady_clock::now() >= tEnd) return fnCondition();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

int OpenFdCount() {
  int iCount = 0;
  DIR* psDir = opendir("/proc/self/fd");
  if (psDir == nullptr) return -1;
  while (readdir(psDir) != nullptr) ++iCount;
  closedir(psDir);
  return iCount - 3;  // ".", ".." and the descriptor of the listing itself
}

int SettledFdCount(int iExpected, std::chrono::milliseconds tLimit) {
  int iCount = OpenFdCount();
  WaitUntil([&] { return (iCount = OpenFdCount()) == iExpected; }, tLimit);
  return iCount;
}

}  // namespace camtest
