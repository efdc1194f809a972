// The recorder credential transform: user name and password never travel in
// plain to a KEL recorder; each is mixed with the key that the recorder
// handed out and sent as 64 lower-case hexadecimal digits.
#ifndef CAM_KEL_CRYPT_H
#define CAM_KEL_CRYPT_H

namespace cgi {

// Number of credential bytes mixed; longer credentials are cut, shorter
// ones padded with zero bytes.
constexpr int kKelCryptBytes = 32;
// Size of the output: 64 hex digits and the terminating zero.
constexpr int kKelCryptTextSize = 2 * kKelCryptBytes + 1;

// Writes the 64 hex digits for pcData under pcKey into pcOut (at least
// kKelCryptTextSize bytes) and returns pcOut. Null key or data count as empty.
char* KelEncrypt(const char* pcKey, const char* pcData, char* pcOut);

}  // namespace cgi

#endif
