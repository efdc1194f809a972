#include "TestClient.h"

#include <arpa/inet.h>
#include <jpeglib.h>
#include <netinet/in.h>
#include <nettle/base64.h>
#include <nettle/md5.h>
#include <nettle/sha2.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cctype>
#include <csetjmp>
#include <cstdio>
#include <cstring>

namespace camsim_test {

namespace {

bool SameIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

std::string Hex(const uint8_t* data, size_t size) {
  std::string out;
  char pair[3];
  for (size_t i = 0; i < size; ++i) {
    std::snprintf(pair, sizeof pair, "%02x", data[i]);
    out += pair;
  }
  return out;
}

int LeftMs(std::chrono::steady_clock::time_point deadline) {
  auto left = std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// Reads what is there within the time left: >0 bytes, 0 close, -1 nothing.
int ReadSome(int fd, std::string* text, std::chrono::steady_clock::time_point deadline) {
  pollfd entry = {fd, POLLIN, 0};
  if (poll(&entry, 1, LeftMs(deadline)) <= 0) return -1;
  char buffer[65536];
  ssize_t got = read(fd, buffer, sizeof buffer);  // sockets and pipes alike
  if (got <= 0) return 0;
  text->append(buffer, static_cast<size_t>(got));
  return static_cast<int>(got);
}

}  // namespace

std::string Response::Header(const std::string& name) const {
  for (const auto& header : headers) {
    if (SameIgnoringCase(header.first, name)) return header.second;
  }
  return "";
}

std::string Response::Line(const std::string& key, bool* found) const {
  size_t start = 0;
  while (start < body.size()) {
    size_t end = body.find("\r\n", start);
    if (end == std::string::npos) end = body.size();
    if (body.compare(start, key.size(), key) == 0) {
      if (found) *found = true;
      return body.substr(start + key.size(), end - start - key.size());
    }
    start = end + 2;
  }
  if (found) *found = false;
  return "";
}

int Connect(const std::string& address, uint16_t port) {
  sockaddr_storage storage{};
  socklen_t length = 0;
  auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
  auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
  if (inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    v4->sin_port = htons(port);
    length = sizeof *v4;
  } else if (inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
    v6->sin6_family = AF_INET6;
    v6->sin6_port = htons(port);
    length = sizeof *v6;
  } else {
    return -1;
  }
  int fd = socket(storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (connect(fd, reinterpret_cast<sockaddr*>(&storage), length) != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

bool SendText(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    ssize_t sent = send(fd, text.data() + done, text.size() - done, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    done += static_cast<size_t>(sent);
  }
  return true;
}

std::string ReadUntilClose(int fd, milliseconds timeout, bool* closed) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  std::string text;
  *closed = false;
  for (;;) {
    int got = ReadSome(fd, &text, deadline);
    if (got == 0) *closed = true;
    if (got <= 0) return text;
  }
}

bool ReadUntil(int fd, std::string* text, const std::string& needle, milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (text->find(needle) == std::string::npos) {
    if (ReadSome(fd, text, deadline) <= 0) return false;
  }
  return true;
}

Response ParseResponse(const std::string& raw) {
  Response response;
  response.raw = raw;
  size_t end = raw.find("\r\n\r\n");
  if (end == std::string::npos) return response;
  size_t lineEnd = raw.find("\r\n");
  response.statusLine = raw.substr(0, lineEnd);
  if (response.statusLine.compare(0, 7, "HTTP/1.") != 0 || response.statusLine.size() < 12) {
    return response;
  }
  response.status = std::atoi(response.statusLine.c_str() + 9);
  size_t start = lineEnd + 2;
  while (start < end) {
    size_t next = raw.find("\r\n", start);
    std::string line = raw.substr(start, next - start);
    size_t colon = line.find(':');
    std::string value = colon == std::string::npos ? "" : line.substr(colon + 1);
    value.erase(0, value.find_first_not_of(' '));
    response.headers.emplace_back(line.substr(0, colon), value);
    start = next + 2;
  }
  response.body = raw.substr(end + 4);
  response.complete = true;
  return response;
}

Response Get(const std::string& address, uint16_t port, const std::string& target,
             const std::string& extraHeaders, const std::string& version) {
  int fd = Connect(address, port);
  if (fd < 0) return Response();
  SendText(fd, "GET " + target + " " + version + "\r\nHost: " + address + "\r\n" + extraHeaders +
                   "\r\n");
  bool closed = false;
  std::string raw = ReadUntilClose(fd, kDeadline, &closed);
  close(fd);
  Response response = ParseResponse(raw);
  response.closed = closed;
  return response;
}

PushReader::~PushReader() {
  if (fd >= 0) close(fd);
}

bool PushReader::Open(const std::string& address, uint16_t port, const std::string& target) {
  fd = Connect(address, port);
  if (fd < 0) return false;
  SendText(fd, "GET " + target + " HTTP/1.0\r\nConnection: Keep-Alive\r\n\r\n");
  if (!ReadUntil(fd, &data, "\r\n\r\n", kDeadline)) return false;
  size_t end = data.find("\r\n\r\n") + 4;
  head = ParseResponse(data.substr(0, end));
  data.erase(0, end);
  std::string type = head.Header("Content-Type");
  size_t mark = type.find("boundary=");
  if (mark != std::string::npos) boundary = type.substr(mark + 9);
  return head.complete;
}

bool PushReader::NextPart(std::string* body, milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  std::string start = "--" + boundary + "\r\n";
  for (;;) {
    size_t mark = data.find(start);
    size_t headEnd = mark == std::string::npos ? mark : data.find("\r\n\r\n", mark);
    if (headEnd != std::string::npos) {
      Response part =
          ParseResponse("HTTP/1.0 200 X\r\n" +
                        data.substr(mark + start.size(), headEnd + 4 - mark - start.size()));
      size_t length = static_cast<size_t>(std::atol(part.Header("Content-Length").c_str()));
      if (data.size() >= headEnd + 4 + length) {
        *body = data.substr(headEnd + 4, length);
        data.erase(0, headEnd + 4 + length);
        return true;
      }
    }
    if (ReadSome(fd, &data, deadline) <= 0) return false;
  }
}

std::string Md5(const std::string& text) {
  md5_ctx context;
  md5_init(&context);
  md5_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  uint8_t digest[MD5_DIGEST_SIZE];
  md5_digest(&context, sizeof digest, digest);
  return Hex(digest, sizeof digest);
}

std::string Sha256(const std::string& text) {
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&context, sizeof digest, digest);
  return Hex(digest, sizeof digest);
}

std::string Base64(const std::string& text) {
  std::string out(BASE64_ENCODE_RAW_LENGTH(text.size()), '\0');
  base64_encode_raw(&out[0], text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  return out;
}

std::string AuthParam(const std::string& header, const std::string& name) {
  std::string key = name + "=";
  size_t at = 0;
  while ((at = header.find(key, at)) != std::string::npos) {
    if (at == 0 || header[at - 1] == ' ' || header[at - 1] == ',') break;
    at += key.size();
  }
  if (at == std::string::npos) return "";
  size_t value = at + key.size();
  if (value < header.size() && header[value] == '"') {
    return header.substr(value + 1, header.find('"', value + 1) - value - 1);
  }
  size_t end = header.find(',', value);
  return header.substr(value, end == std::string::npos ? std::string::npos : end - value);
}

namespace {

struct JpegError {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};

void OnJpegError(j_common_ptr info) {
  std::longjmp(reinterpret_cast<JpegError*>(info->err)->jump, 1);
}

void Quiet(j_common_ptr) {}

}  // namespace

Picture DecodeJpeg(const std::string& jpeg) {
  Picture picture;
  jpeg_decompress_struct info;
  JpegError error;
  info.err = jpeg_std_error(&error.manager);
  error.manager.error_exit = OnJpegError;
  error.manager.output_message = Quiet;
  std::vector<uint8_t> row;
  if (setjmp(error.jump) != 0) {
    jpeg_destroy_decompress(&info);
    return Picture();
  }
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(jpeg.data()),
               static_cast<unsigned long>(jpeg.size()));
  if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK) {
    jpeg_destroy_decompress(&info);
    return Picture();
  }
  jpeg_start_decompress(&info);
  row.resize(static_cast<size_t>(info.output_width) * info.output_components);
  while (info.output_scanline < info.output_height) {
    JSAMPROW rows[1] = {row.data()};
    jpeg_read_scanlines(&info, rows, 1);
    for (uint8_t value : row) {
      if (value < picture.minGray) picture.minGray = value;
      if (value > picture.maxGray) picture.maxGray = value;
    }
  }
  picture.width = static_cast<int>(info.output_width);
  picture.height = static_cast<int>(info.output_height);
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  picture.valid = error.manager.num_warnings == 0;
  return picture;
}

}  // namespace camsim_test
