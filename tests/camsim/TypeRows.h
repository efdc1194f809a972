// The camera rows of the requester's camera-type table, typed in here row
// by row for the tests: what each camera type (other than the Quillon ones
// and the recorders) answers; and the recorders whose login reply carries
// their audio settings.
#ifndef CAMSIM_TEST_TYPE_ROWS_H
#define CAMSIM_TEST_TYPE_ROWS_H

#include <gtest/gtest.h>

#include <string>

#include "TestClient.h"

namespace camsim_test {

enum KeepAliveForm { kNoKeepAlive, kFullKeepAlive, kShortKeepAlive };
enum PresetForm { kNoPreset, kLowerPreset, kUpperPreset };

struct CameraRow {
  int model;
  bool session;
  bool mpeg4Interval;
  bool h264Interval;
  KeepAliveForm keepAlive;
  bool video;  // MPEG-4 / H.264 start-stop
  bool audio;  // audio start-stop (RTP and HTTP)
  bool jpeg;   // JPEG start-stop over HTTP
  PresetForm preset;
};

constexpr KeepAliveForm F = kFullKeepAlive;
constexpr PresetForm L = kLowerPreset;
constexpr PresetForm N = kNoPreset;

// Camera types 0 to 30 other than the Quillon ones.
constexpr CameraRow kCameraRows[] = {
    {0, true, true, false, F, true, true, true, N},
    {1, true, true, false, F, true, true, true, N},
    {2, true, true, false, F, true, true, true, N},
    {3, true, true, false, F, true, true, true, N},
    {4, true, true, false, F, true, true, true, N},
    {5, true, true, false, F, true, true, true, N},
    {7, true, true, false, F, true, true, true, N},
    {8, false, false, false, kNoKeepAlive, false, false, false, N},
    {9, true, true, true, F, true, true, true, N},
    {10, true, true, false, F, true, true, true, N},
    {11, true, true, false, F, true, true, true, L},
    {12, true, true, false, F, true, true, true, L},
    {14, true, true, false, F, true, true, true, L},
    {15, true, true, false, F, true, true, true, L},
    {16, true, true, false, F, true, true, true, L},
    {17, true, true, false, F, true, true, true, L},
    {18, true, true, false, F, true, true, true, L},
    {19, false, false, false, kNoKeepAlive, false, false, false, N},
    {21, true, true, false, kShortKeepAlive, true, false, true, N},
    {22, true, true, false, F, true, true, true, L},
    {23, false, false, false, kNoKeepAlive, false, false, false, N},
    {24, true, true, true, F, true, true, true, N},
    {25, true, true, false, F, true, true, true, L},
    {26, true, true, true, F, true, true, true, N},
    {27, true, true, true, F, true, true, true, N},
    {28, true, true, true, F, true, true, true, L},
    {29, false, false, false, kNoKeepAlive, false, false, false, N},
    {30, true, true, true, F, true, true, true, L},
};

// The recorders whose audio settings the requester reads from the login
// reply; the others' are fixed.
inline bool LoginCarriesAudio(int model) {
  return model == 32 || model == 33 || model == 35;
}

// A recorder's login reply: LOGIN=OK, and aBitrate= and aEnable= with these
// values where the type's audio settings are read, else neither key.
inline void ExpectLoginAudioKeys(const Response& login, int model, const std::string& bitrate,
                                 const std::string& enable) {
  bool read = LoginCarriesAudio(model);
  bool bitrateFound = false;
  bool enableFound = false;
  EXPECT_EQ(login.Line("LOGIN="), "OK") << model;
  EXPECT_EQ(login.Line("aBitrate=", &bitrateFound), read ? bitrate : "") << model;
  EXPECT_EQ(login.Line("aEnable=", &enableFound), read ? enable : "") << model;
  EXPECT_EQ(bitrateFound, read) << model;
  EXPECT_EQ(enableFound, read) << model;
}

}  // namespace camsim_test

#endif
