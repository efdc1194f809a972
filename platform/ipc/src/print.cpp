// The device's print. Each call formats its whole text (no length limit)
// and writes it in one piece, one call at a time, to standard error or to
// the sink a process installed. Serialising the writes keeps the lines of
// many requester threads whole.
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>

#include "kxcom.h"

namespace kxcom {
namespace {

struct PrintChannel {
  std::mutex mutex;
  COM_PrintSink sink = nullptr;
  void* context = nullptr;
};

// Never destroyed: threads that still print while the process exits may use it.
PrintChannel& TheChannel() {
  static PrintChannel* channel = new PrintChannel;
  return *channel;
}

// Set while this thread is inside the sink: a sink that prints itself goes
// straight to standard error instead of waiting for its own lock.
thread_local bool t_in_sink = false;

// Texts up to this size are formatted on the stack; the requester's lines
// (at most 255 characters behind a prefix of at most 96) never need more.
constexpr size_t kStackText = 512;

void WriteToStderr(const char* pcText, size_t ulLength) {
  std::fwrite(pcText, 1, ulLength, stderr);
  std::fflush(stderr);
}

void Write(const char* pcText, size_t ulLength) {
  if (t_in_sink) {
    WriteToStderr(pcText, ulLength);
    return;
  }
  PrintChannel& channel = TheChannel();
  std::lock_guard<std::mutex> lock(channel.mutex);
  if (channel.sink == nullptr) {
    WriteToStderr(pcText, ulLength);
    return;
  }
  t_in_sink = true;
  channel.sink(pcText, channel.context);
  t_in_sink = false;
}

}  // namespace
}  // namespace kxcom

extern "C" {

int COM_printf(const char* pcFormat, ...) {
  if (pcFormat == nullptr) return -1;
  char acText[kxcom::kStackText];
  va_list args;
  va_start(args, pcFormat);
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(acText, sizeof(acText), pcFormat, args);
  va_end(args);
  if (length < 0) {
    va_end(again);
    return -1;
  }
  if (static_cast<size_t>(length) < sizeof(acText)) {
    va_end(again);
    kxcom::Write(acText, static_cast<size_t>(length));
    return length;
  }
  // A longer text: formatted whole on the heap; no length limit here.
  std::string text;
  try {
    text.resize(static_cast<size_t>(length) + 1);
    std::vsnprintf(&text[0], text.size(), pcFormat, again);
    text.resize(static_cast<size_t>(length));
  } catch (...) {
    va_end(again);
    return -1;  // out of memory: the line is lost, the caller goes on
  }
  va_end(again);
  kxcom::Write(text.c_str(), text.size());
  return length;
}

void COM_SetPrintSink(COM_PrintSink pfnSink, void* pvContext) {
  kxcom::PrintChannel& channel = kxcom::TheChannel();
  std::lock_guard<std::mutex> lock(channel.mutex);
  channel.sink = pfnSink;
  channel.context = pfnSink == nullptr ? nullptr : pvContext;
}

}  // extern "C"
