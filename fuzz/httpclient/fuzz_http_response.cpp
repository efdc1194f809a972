// Feeds arbitrary bytes to the response parser as a camera's answer that
// arrives in small pieces, then answers any authentication challenge in it.
#include <cstdlib>
#include <cstring>

#include "kxhttp_internal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kxhttp;
  MemorySource source(data, size, size % 7 + 1);
  InputBuffer input;
  input.source = &source;
  Deadline deadline = Clock::now() + std::chrono::seconds(5);
  ResponseHead head;
  if (read_response_head(input, deadline, head) != 0) return 0;
  if (head.status < 100 || head.status > 999) std::abort();
  uint32_t code = code_for_status(head.status);
  if ((code & 0xFFFFF000u) != HTTP_RESULT_OK) std::abort();
  char body[2048];
  std::memset(body, 'x', sizeof body);
  size_t stored = 0;
  read_response_body(input, deadline, head, false, body, sizeof body, stored);
  // The body always ends in a zero inside the buffer.
  if (stored >= sizeof body || body[stored] != '\0') std::abort();
  Challenge challenge = choose_challenge(head.headers);
  if (challenge.scheme == Challenge::Scheme::kDigest) {
    digest_authorization(challenge, "user", "password", "GET", "/cgi-bin/x", "0a4f113b");
  }
  return 0;
}
