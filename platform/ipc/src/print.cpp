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

void WriteToStderr(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

void Write(const std::string& text) {
  if (t_in_sink) {
    WriteToStderr(text);
    return;
  }
  PrintChannel& channel = TheChannel();
  std::lock_guard<std::mutex> lock(channel.mutex);
  if (channel.sink == nullptr) {
    WriteToStderr(text);
    return;
  }
  t_in_sink = true;
  channel.sink(text.c_str(), channel.context);
  t_in_sink = false;
}

// Formats into a string of the exact length; false on a format error.
bool Format(std::string* text, const char* pcFormat, va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, pcFormat, measure);
  va_end(measure);
  if (length < 0) return false;
  text->resize(static_cast<size_t>(length) + 1);
  std::vsnprintf(&(*text)[0], text->size(), pcFormat, args);
  text->resize(static_cast<size_t>(length));
  return true;
}

}  // namespace
}  // namespace kxcom

extern "C" {

int COM_printf(const char* pcFormat, ...) {
  if (pcFormat == nullptr) return -1;
  std::string text;
  va_list args;
  va_start(args, pcFormat);
  bool formatted = false;
  try {
    formatted = kxcom::Format(&text, pcFormat, args);
  } catch (...) {
    formatted = false;  // out of memory: the line is lost, the caller goes on
  }
  va_end(args);
  if (!formatted) return -1;
  kxcom::Write(text);
  return static_cast<int>(text.size());
}

void COM_SetPrintSink(COM_PrintSink pfnSink, void* pvContext) {
  kxcom::PrintChannel& channel = kxcom::TheChannel();
  std::lock_guard<std::mutex> lock(channel.mutex);
  channel.sink = pfnSink;
  channel.context = pfnSink == nullptr ? nullptr : pvContext;
}

}  // extern "C"
