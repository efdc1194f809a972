// The recorder's check of a login: the credentials travel transformed
// with the key that start.cgi handed out. This is the recorder's side,
// written on its own: it shares no code with the requester's transform,
// so that one mistake cannot hide in both.
#ifndef CAMSIM_LOGIN_TRANSFORM_H
#define CAMSIM_LOGIN_TRANSFORM_H

#include <string>

namespace camsim {

// The 64 lower-case hex digits that a requester sends for data (a user
// name or a password) under key. The first 32 bytes of data count, zero
// bytes stand in past its end; each output byte is the data byte, chained
// with the previous output byte, then mixed with every key byte in turn.
std::string LoginTransform(const std::string& key, const std::string& data);

}  // namespace camsim

#endif
