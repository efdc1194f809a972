// Vectors computed by hand from the transform's rule: each position is the
// data byte (zero past the end), XOR the previous output byte from the
// second position on, then for every key byte k: (c XOR k) - k, mod 256.
#include <gtest/gtest.h>

#include <string>

#include "CamKelCrypt.h"

namespace {

std::string Encrypt(const char* key, const char* data) {
  char out[cgi::kKelCryptTextSize];
  return cgi::KelEncrypt(key, data, out);
}

std::string Repeat(const std::string& pair, int count) {
  std::string s;
  for (int i = 0; i < count; ++i) s += pair;
  return s;
}

TEST(KelCrypt, EmptyKeyChainsTheFirstByteThroughEveryPosition) {
  // 0x41, then 0 XOR 0x41 = 0x41 at every later position.
  EXPECT_EQ(Encrypt("", "A"), Repeat("41", 32));
}

TEST(KelCrypt, OneByteKey) {
  // pos 0: (0x41^0x01)-0x01 = 0x3f; pos 1: ((0^0x3f)^0x01)-0x01 = 0x3d;
  // pos 2: ((0^0x3d)^0x01)-0x01 = 0x3b; each later position drops by 2.
  const std::string out = Encrypt("\x01", "A");
  EXPECT_EQ(out.substr(0, 6), "3f3d3b");
  EXPECT_EQ(out.size(), 64u);
  // Position 31: 0x3f - 2*31 = 0x3f - 0x3e = 0x01.
  EXPECT_EQ(out.substr(62, 2), "01");
}

TEST(KelCrypt, SixByteKey) {
  // Key "abcdef" (0x61..0x66), data "A". Position 0 worked by hand:
  // 0x41^0x61=0x20, -0x61=0xbf; ^0x62=0xdd, -0x62=0x7b; ^0x63=0x18,
  // -0x63=0xb5; ^0x64=0xd1, -0x64=0x6d; ^0x65=0x08, -0x65=0xa3;
  // ^0x66=0xc5, -0x66=0x5f.
  const std::string out = Encrypt("abcdef", "A");
  EXPECT_EQ(out.substr(0, 2), "5f");
  // Position 1: c = 0 ^ 0x5f = 0x5f; ^0x61=0x3e, -0x61=0xdd; ^0x62=0xbf,
  // -0x62=0x5d; ^0x63=0x3e, -0x63=0xdb; ^0x64=0xbf, -0x64=0x5b; ^0x65=0x3e,
  // -0x65=0xd9; ^0x66=0xbf, -0x66=0x59.
  EXPECT_EQ(out.substr(2, 2), "59");
}

TEST(KelCrypt, FortyCharactersAreCutToThirtyTwo) {
  const std::string forty(40, 'x');
  const std::string thirtyTwo(32, 'x');
  EXPECT_EQ(Encrypt("k3Y", forty.c_str()), Encrypt("k3Y", thirtyTwo.c_str()));
}

TEST(KelCrypt, EmptyInputStillGivesSixtyFourDigits) {
  EXPECT_EQ(Encrypt("", ""), Repeat("00", 32));
  // Key 0x01 on all-zero data: pos 0: (0^1)-1 = 0; later positions stay 0.
  EXPECT_EQ(Encrypt("\x01", ""), Repeat("00", 32));
  const std::string out = Encrypt("zz", "");
  EXPECT_EQ(out.size(), 64u);
  EXPECT_EQ(out.find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(KelCrypt, OneChangedCharacterChangesEveryLaterPair) {
  const std::string a = Encrypt("key", "abcdefgh");
  const std::string b = Encrypt("key", "abcXefgh");
  EXPECT_EQ(a.substr(0, 6), b.substr(0, 6));
  for (int i = 3; i < 32; ++i) EXPECT_NE(a.substr(2 * i, 2), b.substr(2 * i, 2)) << i;
}

}  // namespace
