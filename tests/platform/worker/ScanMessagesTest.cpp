// The messages between extension, worker and scan: what is sent arrives, and nothing else is taken.
#include <gtest/gtest.h>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/Packets.h"
#include "platform/linux/worker/MessageSocket.h"
#include "platform/linux/worker/ScanMessages.h"

using platform::VariantHandle;

namespace {

std::string serialized(const char *text) {
  const VariantHandle message(
      g_variant_ref_sink(g_variant_new_variant(g_variant_new_parsed(text))));
  return {static_cast<const char *>(g_variant_get_data(message.get())),
          g_variant_get_size(message.get())};
}

}  // namespace

TEST(ScanMessages, EachArrivesAsItWasSent) {
  const ScanMessage messages[] = {
      ScanReports(),
      ScanReports{{"/wc", svn_wc_status_modified, false, false, false},
                  {"/wc/caf\xC3\xA9 \xFF", svn_wc_status_none, true, true, true},
                  {"", svn_wc_status_incomplete, false, true, false}},
      ScanDatabase{"/wc/.svn/wc.db", "1 2 3"},
      ScanBeat(),
      ScanEnd{},
      ScanEnd{155037, "Previous operation has not finished"},
  };
  for (const ScanMessage &message : messages) {
    EXPECT_EQ(decodeScanMessage(encode(message)), message) << message.index();
  }
  for (const ScanExit &exit : {ScanExit{true, 6}, ScanExit{false, 75}}) {
    EXPECT_EQ(decodeScanExit(encode(exit)), exit);
  }
}

TEST(ScanMessages, ARequestArrivesAsItWasSent) {
  KTRWorkingCopyScanOptions options;
  options.depth = svn_depth_files;
  options.reportsIgnored = true;
  options.entersExternals = false;
  const auto request =
      decodeScanRequest(encode(ScanRequest{"/wc \xFF", "/configuration", options}));
  ASSERT_TRUE(request);
  EXPECT_EQ(request->targetPath, "/wc \xFF");
  EXPECT_EQ(request->configDir, "/configuration");
  EXPECT_EQ(request->options.depth, svn_depth_files);
  EXPECT_FALSE(request->options.contactsRepository);
  EXPECT_FALSE(request->options.reportsUnchanged);
  EXPECT_TRUE(request->options.reportsIgnored);
  EXPECT_FALSE(request->options.entersExternals);

  EXPECT_EQ(decodeScanRequest(encode(ScanRequest{"/wc", std::nullopt, {}}))->configDir,
            std::nullopt);
}

TEST(ScanMessages, OfAnErrorsTextArrivesWhatCanBeALineOfTheLog) {
  const auto sentAs = [](const std::string &text) {
    const auto message = decodeScanMessage(encode(ScanEnd{1, text}));
    return message ? std::get<ScanEnd>(*message).message : "not understood";
  };
  EXPECT_EQ(sentAs("caf\xE9"), "caf\xEF\xBF\xBD");
  EXPECT_EQ(sentAs(std::string(1024, 'x')), std::string(1024, 'x'));
  EXPECT_EQ(sentAs(std::string(100'000, 'x')), std::string(1024, 'x'));
  std::string replaced;
  for (int i = 0; i < 341; ++i) {
    replaced += "\xEF\xBF\xBD";
  }
  EXPECT_EQ(sentAs(std::string(100'000, '\xFF')), replaced);
  EXPECT_FALSE(decodeScanMessage(serialized(("(1, '" + std::string(1025, 'x') + "')").c_str())));
}

TEST(ScanMessages, WhatIsNoneOfThemIsRefused) {
  const std::string whole = encode(ScanEnd{1, "message"});
  for (const std::string &bytes :
       {std::string(), std::string("x"), std::string(100, '\0'), std::string(100, '\xFF'),
        whole.substr(0, whole.size() - 1), whole + "x", serialized("'text'"),
        serialized("[('/wc', 2)]"), serialized("[(b'/wc', byte 0, byte 0)]"),
        serialized("[(b'/wc', byte 15, byte 0)]"), serialized("[(b'/wc', byte 8, byte 8)]"),
        serialized("(true, 6)")}) {
    EXPECT_EQ(decodeScanMessage(bytes), std::nullopt) << bytes;
  }
  EXPECT_EQ(decodeScanExit(whole), std::nullopt);
  EXPECT_FALSE(decodeScanRequest(whole));
  EXPECT_FALSE(decodeScanRequest(serialized("(b'/wc', b'', 7, false, false, false, false)")));
  EXPECT_FALSE(decodeScanRequest(serialized("(b'/wc', b'', -2, false, false, false, false)")));
}

TEST(MessageSocket, KeepsMessagesApartAndTellsTheEnd) {
  auto ends = MessageSocket::makePair();
  ASSERT_TRUE(ends);
  EXPECT_TRUE(ends->first.send("one"));
  EXPECT_TRUE(ends->first.send("another"));
  std::string bytes;
  EXPECT_EQ(ends->second.receive(&bytes), MessageSocket::Reception::message);
  EXPECT_EQ(bytes, "one");
  EXPECT_EQ(ends->second.receive(&bytes), MessageSocket::Reception::message);
  EXPECT_EQ(bytes, "another");
  const MessageSocket remaining = std::move(ends->second);
  ends.reset();
  EXPECT_EQ(remaining.receive(&bytes), MessageSocket::Reception::end);
  EXPECT_FALSE(remaining.send("more"));
}

TEST(MessageSocket, TakesTheGreatestMessageAndNoGreaterOne) {
  const auto ends = MessageSocket::makePair();
  std::string bytes;
  EXPECT_TRUE(ends->first.send(std::string(greatestScanMessage, 'x')));
  EXPECT_EQ(ends->second.receive(&bytes), MessageSocket::Reception::message);
  EXPECT_EQ(bytes.size(), greatestScanMessage);
  EXPECT_TRUE(ends->first.send(std::string(greatestScanMessage + 1, 'x')));
  EXPECT_EQ(ends->second.receive(&bytes), MessageSocket::Reception::failure);
}

TEST(MessageSocket, HandsAnotherSocketOver) {
  auto ends = MessageSocket::makePair();
  auto others = MessageSocket::makePair();
  EXPECT_TRUE(ends->first.send("with it", &others->first));
  std::optional<MessageSocket> attached;
  std::string bytes;
  EXPECT_EQ(ends->second.receive(&bytes, &attached), MessageSocket::Reception::message);
  ASSERT_TRUE(attached);
  EXPECT_TRUE(attached->send("through it"));
  EXPECT_EQ(others->second.receive(&bytes), MessageSocket::Reception::message);
  EXPECT_EQ(bytes, "through it");

  EXPECT_TRUE(ends->first.send("without it"));
  EXPECT_EQ(ends->second.receive(&bytes, &attached), MessageSocket::Reception::message);
  EXPECT_FALSE(attached);
}

TEST(ScanMessages, OneThatComesWithSeveralOpenFilesComesWithoutAny) {
  auto sockets = MessageSocket::makePair();
  ASSERT_TRUE(sockets);
  const int some = sockets->first.descriptor();
  for (const std::vector<int> &files : {std::vector{some}, std::vector{some, some}}) {
    ASSERT_TRUE(platform::sendPacket(some, "bytes", files));
    std::string bytes;
    std::optional<MessageSocket> attached;
    EXPECT_EQ(sockets->second.receive(&bytes, &attached), MessageSocket::Reception::message);
    EXPECT_EQ(bytes, "bytes");
    EXPECT_EQ(attached.has_value(), files.size() == 1);
  }
}
