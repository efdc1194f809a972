// The simulator's own pieces: request heads, queries, fault texts, the
// command line, models and pictures.
#include <gtest/gtest.h>

#include "Fault.h"
#include "HttpRequest.h"
#include "Jpeg.h"
#include "Models.h"
#include "Options.h"
#include "TestClient.h"

namespace camsim_test {
namespace {

TEST(RequestHead, OriginAndAbsoluteForm) {
  camsim::HttpRequest request;
  ASSERT_TRUE(camsim::ParseRequestHead(
      "GET /cgi-bin/jpeg?connect=start&UID=5 HTTP/1.0\r\nHost: [::1]\r\nConnection: Keep-Alive",
      &request));
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.path, "/cgi-bin/jpeg");
  EXPECT_EQ(request.query, "connect=start&UID=5");
  ASSERT_EQ(request.headers.size(), 2u);
  EXPECT_EQ(request.headers[0].second, "[::1]");
  camsim::HttpRequest proxied;
  ASSERT_TRUE(camsim::ParseRequestHead(
      "GET http://10.0.0.5:8080/cgi-bin/push.cgi?CMD=STOP HTTP/1.1", &proxied));
  EXPECT_EQ(proxied.target, "http://10.0.0.5:8080/cgi-bin/push.cgi?CMD=STOP");
  EXPECT_EQ(proxied.path, "/cgi-bin/push.cgi");
  EXPECT_EQ(proxied.query, "CMD=STOP");
}

TEST(RequestHead, RefusesWhatIsNotHttp1) {
  camsim::HttpRequest request;
  EXPECT_FALSE(camsim::ParseRequestHead("GET / HTTP/2.0", &request));
  EXPECT_FALSE(camsim::ParseRequestHead("GET /", &request));
  EXPECT_FALSE(camsim::ParseRequestHead("GET relative HTTP/1.0", &request));
  EXPECT_FALSE(camsim::ParseRequestHead("GET / HTTP/1.0\r\nno colon here", &request));
}

TEST(RequestHead, HeadEnd) {
  EXPECT_EQ(camsim::FindHeadEnd("GET / HTTP/1.0\r\n\r\nrest"), 18u);
  EXPECT_EQ(camsim::FindHeadEnd("GET / HTTP/1.0\n\n"), 16u);
  EXPECT_EQ(camsim::FindHeadEnd("GET / HTTP/1.0\r\n"), std::string::npos);
}

TEST(Query, PairsInOrderAndDecoded) {
  auto pairs = camsim::ParseQuery("a=1&b=x%20y&flag&c=");
  ASSERT_EQ(pairs.size(), 4u);
  EXPECT_EQ(pairs[1].second, "x y");
  EXPECT_EQ(pairs[2].first, "flag");
  bool found = false;
  EXPECT_EQ(camsim::QueryValue("UID=-1&HTML=as_status.html", "UID", &found), "-1");
  EXPECT_TRUE(found);
  camsim::QueryValue("UID=1", "uid", &found);
  EXPECT_FALSE(found) << "keys are case-sensitive";
}

TEST(FaultText, EveryItem) {
  camsim::Fault fault;
  std::string error;
  ASSERT_TRUE(camsim::ParseFault("status=503,delay=250,times=3", &fault, &error));
  EXPECT_EQ(fault.status, 503);
  EXPECT_EQ(fault.delayMs, 250);
  EXPECT_EQ(fault.times, 3);
  ASSERT_TRUE(camsim::ParseFault("noanswer", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kNoAnswer);
  ASSERT_TRUE(camsim::ParseFault("close-header", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kCloseMidHeader);
  ASSERT_TRUE(camsim::ParseFault("close-body", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kCloseMidBody);
  ASSERT_TRUE(camsim::ParseFault("garbage", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kGarbage);
  ASSERT_TRUE(camsim::ParseFault("long-body", &fault, &error));
  EXPECT_EQ(fault.longBodyBytes, camsim::kDefaultLongBody);
  ASSERT_TRUE(camsim::ParseFault("long-body=3000,omit=iMultiPort=", &fault, &error));
  EXPECT_EQ(fault.longBodyBytes, 3000u);
  EXPECT_EQ(fault.omitKey, "iMultiPort=");
  ASSERT_TRUE(camsim::ParseFault("push-stall=4", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kPushStall);
  EXPECT_EQ(fault.framesBeforeStall, 4);
  ASSERT_TRUE(camsim::ParseFault("when=CMD=START,uid=7,status=503", &fault, &error)) << error;
  ASSERT_EQ(fault.when.size(), 2u);
  EXPECT_EQ(fault.when[0], (std::pair<std::string, std::string>{"CMD", "START"}));
  EXPECT_EQ(fault.when[1], (std::pair<std::string, std::string>{"UID", "7"}));
  EXPECT_TRUE(camsim::FaultMeets(fault, "CMD=START&CAM=0&UID=7&COMP=JPEG"));
  EXPECT_FALSE(camsim::FaultMeets(fault, "CMD=STOP&UID=7"));
  EXPECT_FALSE(camsim::FaultMeets(fault, "CMD=START&UID=70"));
  EXPECT_TRUE(camsim::FaultMeets(camsim::Fault(), "anything=1"));
  ASSERT_TRUE(camsim::ParseFault("when=FLAG=", &fault, &error));
  EXPECT_TRUE(camsim::FaultMeets(fault, "FLAG="));
  EXPECT_FALSE(camsim::FaultMeets(fault, "OTHER=1")) << "an absent key is not an empty value";
  ASSERT_TRUE(camsim::ParseFault("reset", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kReset);
  ASSERT_TRUE(camsim::ParseFault("push-end=3,boundary-quoted,boundary-bare", &fault, &error));
  EXPECT_EQ(fault.action, camsim::FaultAction::kPushEnd);
  EXPECT_EQ(fault.framesBeforeStall, 3);
  EXPECT_TRUE(fault.boundaryQuoted);
  EXPECT_TRUE(fault.boundaryBare);
  ASSERT_TRUE(camsim::ParseFault("drip=20,late-keys", &fault, &error));
  EXPECT_EQ(fault.dripMs, 20);
  EXPECT_EQ(fault.lateKeysAt, camsim::kDefaultLateKeys);
  ASSERT_TRUE(camsim::ParseFault("late-keys=2100,no-length", &fault, &error));
  EXPECT_EQ(fault.lateKeysAt, 2100u);
  EXPECT_EQ(fault.framing, camsim::BodyFraming::kUntilClose);
  ASSERT_TRUE(camsim::ParseFault("chunked", &fault, &error));
  EXPECT_EQ(fault.framing, camsim::BodyFraming::kChunked);
  ASSERT_TRUE(camsim::ParseFault("chunked-open", &fault, &error));
  EXPECT_EQ(fault.framing, camsim::BodyFraming::kChunkedUnterminated);
  for (const char* bad : {"", "status=abc", "status=42", "long-body=100", "noanswer=1", "explode",
                          "omit=", "delay=-5", "when=", "when=CMD", "when==x", "uid=x", "drip=0",
                          "drip", "reset=1", "chunked=1", "late-keys=0", "boundary-bare=1"}) {
    EXPECT_FALSE(camsim::ParseFault(bad, &fault, &error)) << bad;
  }
}

TEST(CommandLine, DeviceGroups) {
  camsim::Options options;
  std::string error;
  ASSERT_TRUE(camsim::ParseOptions({"--verbose",
                                    "--listen",
                                    "127.0.0.1:0",
                                    "--model",
                                    "KE850",
                                    "--auth",
                                    "digest-sha256",
                                    "--user",
                                    "u",
                                    "--password",
                                    "p",
                                    "--play-mode",
                                    "5",
                                    "--filename",
                                    "=A.DAT",
                                    "--fault",
                                    "/cgi-bin/status.cgi:status=500,times=1",
                                    "--listen",
                                    "[::1]:8080",
                                    "--model",
                                    "7",
                                    "--aenable",
                                    "in",
                                    "--delivery",
                                    "uni_manual",
                                    "--multi-addr",
                                    "225.1.2.3",
                                    "--multi-addr6",
                                    "ff15::9",
                                    "--multi-port",
                                    "5100",
                                    "--uni-port",
                                    "6100",
                                    "--ain-port",
                                    "7100",
                                    "--abitrate",
                                    "64",
                                    "--uid-start",
                                    "100",
                                    "--frame-rate",
                                    "2.5",
                                    "--gray",
                                    "40",
                                    "--realm",
                                    "r",
                                    "--refuse"},
                                   &options, &error))
      << error;
  EXPECT_TRUE(options.verbose);
  ASSERT_EQ(options.devices.size(), 2u);
  const auto& recorder = options.devices[0];
  EXPECT_EQ(recorder.config.address, "127.0.0.1");
  EXPECT_EQ(recorder.config.port, 0);
  EXPECT_EQ(recorder.config.model, 34);
  EXPECT_EQ(recorder.config.auth, camsim::AuthMode::kDigestSha256);
  EXPECT_EQ(recorder.config.user, "u");
  EXPECT_EQ(recorder.config.password, "p");
  EXPECT_EQ(recorder.config.values.playMode, 5);
  EXPECT_EQ(recorder.config.values.fileName, "=A.DAT");
  ASSERT_EQ(recorder.faults.size(), 1u);
  EXPECT_EQ(recorder.faults[0].first, "/cgi-bin/status.cgi");
  EXPECT_EQ(recorder.faults[0].second.status, 500);
  const auto& camera = options.devices[1];
  EXPECT_EQ(camera.config.address, "::1");
  EXPECT_EQ(camera.config.port, 8080);
  EXPECT_EQ(camera.config.model, 7);
  EXPECT_EQ(camera.config.values.audioEnable, "in");
  EXPECT_EQ(camera.config.values.delivery, "uni_manual");
  EXPECT_EQ(camera.config.values.multiAddress, (std::array<int, 4>{225, 1, 2, 3}));
  EXPECT_EQ(camera.config.values.multiAddressV6, "ff15::9");
  EXPECT_EQ(camera.config.values.multiPort, 5100);
  EXPECT_EQ(camera.config.values.uniPort, 6100);
  EXPECT_EQ(camera.config.values.audioInPort, 7100);
  EXPECT_EQ(camera.config.values.audioBitrate, 64);
  EXPECT_EQ(camera.config.values.firstUid, 100);
  EXPECT_DOUBLE_EQ(camera.config.values.frameRate, 2.5);
  EXPECT_EQ(camera.config.values.gray, 40);
  EXPECT_EQ(camera.config.realm, "r");
  EXPECT_TRUE(camera.config.startRefusing);
}

TEST(CommandLine, LimitsAndRunTimeValues) {
  camsim::Options options;
  std::string error;
  ASSERT_TRUE(camsim::ParseOptions(
      {"--listen", "127.0.0.1:0", "--model", "KEL33", "--push-start-status", "204", "--uid-expiry",
       "250", "--nonce-lifetime", "1000", "--head-timeout", "300", "--max-connections", "7",
       "--record", "9", "--listen", "127.0.0.1:0"},
      &options, &error))
      << error;
  ASSERT_EQ(options.devices.size(), 2u);
  const camsim::DeviceConfig& config = options.devices[0].config;
  EXPECT_EQ(config.values.pushStartStatus, 204);
  EXPECT_EQ(config.uidExpiryMs, 250);
  EXPECT_EQ(config.nonceLifetimeMs, 1000);
  EXPECT_EQ(config.headTimeoutMs, 300);
  EXPECT_EQ(config.maxConnections, 7);
  EXPECT_EQ(config.recordLimit, 9u);
  // The next device has the documented defaults.
  const camsim::DeviceConfig& plain = options.devices[1].config;
  EXPECT_EQ(plain.values.pushStartStatus, 0);
  EXPECT_EQ(plain.uidExpiryMs, 0);
  EXPECT_EQ(plain.nonceLifetimeMs, 300000);
  EXPECT_EQ(plain.headTimeoutMs, 10000);
  EXPECT_EQ(plain.maxConnections, 1000);
  EXPECT_EQ(plain.recordLimit, 10000u);
  for (std::vector<std::string> bad :
       std::vector<std::vector<std::string>>{{"--push-start-status", "1000"},
                                             {"--uid-expiry", "-1"},
                                             {"--head-timeout", "0"},
                                             {"--max-connections", "0"},
                                             {"--record", "0"}}) {
    bad.insert(bad.begin(), {"--listen", "127.0.0.1:0"});
    camsim::Options refused;
    EXPECT_FALSE(camsim::ParseOptions(bad, &refused, &error)) << bad[2] << " " << bad[3];
  }
}

TEST(CommandLine, Refusals) {
  for (std::vector<std::string> args :
       std::vector<std::vector<std::string>>{{"--model", "7"},
                                             {"--listen", "localhost:80"},
                                             {"--listen", "::1:80"},
                                             {"--listen", "127.0.0.1:70000"},
                                             {"--listen", "127.0.0.1:0", "--model", "37"},
                                             {"--listen", "127.0.0.1:0", "--auth", "ntlm"},
                                             {"--listen", "127.0.0.1:0", "--fault", "status=500"},
                                             {"--listen", "127.0.0.1:0", "--multi-addr", "1.2.3"},
                                             {"--listen", "127.0.0.1:0", "--bogus"},
                                             {"--listen", "127.0.0.1:0", "--user"}}) {
    camsim::Options options;
    std::string error;
    EXPECT_FALSE(camsim::ParseOptions(args, &options, &error)) << args.back();
    EXPECT_FALSE(error.empty());
  }
}

TEST(CommandLine, HelpListsEveryOption) {
  std::string usage = camsim::UsageText();
  for (const char* option : {"--help",
                             "--verbose",
                             "--listen",
                             "--model",
                             "--auth",
                             "--user",
                             "--password",
                             "--realm",
                             "--uid-start",
                             "--abitrate",
                             "--aenable",
                             "--delivery",
                             "--multi-addr",
                             "--multi-addr6",
                             "--multi-port",
                             "--uni-port",
                             "--ain-port",
                             "--filename",
                             "--play-mode",
                             "--frame-rate",
                             "--gray",
                             "--fault",
                             "--refuse",
                             "status=",
                             "delay=",
                             "noanswer",
                             "close-header",
                             "close-body",
                             "garbage",
                             "long-body",
                             "omit=",
                             "push-stall",
                             "times=",
                             "--push-start-status",
                             "--uid-expiry",
                             "--nonce-lifetime",
                             "--head-timeout",
                             "--max-connections",
                             "--record",
                             "--control",
                             "reset",
                             "push-end",
                             "drip=",
                             "late-keys",
                             "no-length",
                             "chunked",
                             "chunked-open",
                             "boundary-quoted",
                             "boundary-bare",
                             "when=",
                             "uid="}) {
    EXPECT_NE(usage.find(option), std::string::npos) << option;
  }
}

TEST(ModelTable, NamesAndFamilies) {
  EXPECT_EQ(camsim::ParseModel("21"), 21);
  EXPECT_EQ(camsim::ParseModel("qv262"), 21);
  EXPECT_EQ(camsim::ParseModel("KE850"), 34);
  EXPECT_EQ(camsim::ParseModel("37"), -1);
  EXPECT_EQ(camsim::ParseModel("CAM99"), -1);
  for (int model = 0; model <= 36; ++model) {
    camsim::Family expected = model >= 31 ? camsim::Family::kRecorder
                              : (model == 6 || model == 13 || model == 20)
                                  ? camsim::Family::kQuillon
                                  : camsim::Family::kCamera;
    EXPECT_EQ(camsim::FamilyOf(model), expected) << model;
    EXPECT_EQ(camsim::ParseModel(camsim::ModelName(model)), model);
  }
}

TEST(Pictures, DecodeAtEverySizeAndGray) {
  for (const char* resolution : {"", "320", "640", "768", "1280", "999"}) {
    camsim::PictureSize size = camsim::SizeForResolution(resolution);
    for (int gray : {0, 17, 128, 200, 255}) {
      Picture picture = DecodeJpeg(camsim::MakeGrayJpeg(size.width, size.height, gray));
      ASSERT_TRUE(picture.valid) << resolution << " " << gray;
      EXPECT_EQ(picture.width, size.width);
      EXPECT_EQ(picture.height, size.height);
      EXPECT_NEAR(picture.minGray, gray, 1);
      EXPECT_NEAR(picture.maxGray, gray, 1);
    }
  }
  EXPECT_EQ(camsim::SizeForResolution("640").height, 480);
  EXPECT_EQ(camsim::SizeForResolution("").width, 16);
  Picture odd = DecodeJpeg(camsim::MakeGrayJpeg(13, 7, 90));
  EXPECT_TRUE(odd.valid);
  EXPECT_EQ(odd.width, 13);
  EXPECT_EQ(odd.height, 7);
}

}  // namespace
}  // namespace camsim_test
