// What may come from the other side: whole messages, and anything else.
#include <array>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/spawner/Messages.h"

using platform::FileDescriptor;
using platform::Message;
using platform::PacketSockets;
using platform::Reception;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class Messages : public ::testing::Test {
 protected:
  Reception receive() { return platform::receiveMessage(sockets.other, message); }

  void sendBytes(const std::string &bytes) {
    ASSERT_EQ(send(sockets.one, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }

  PacketSockets sockets = std::move(*platform::makePacketSockets());
  Message message;
};

TEST_F(Messages, ArriveAsTheyWereSentAlsoWhereATextIsNotUTF8) {
  ASSERT_TRUE(platform::sendMessage(sockets.one, "word", {"text", "", "/\xFF\xFE"}, {}));
  ASSERT_TRUE(platform::sendMessage(sockets.one, "next", {}, {}));
  EXPECT_EQ(receive(), Reception::message);
  EXPECT_EQ(message.word, "word");
  EXPECT_THAT(message.texts, ElementsAre("text", "", "/\xFF\xFE"));
  EXPECT_THAT(message.files, IsEmpty());
  EXPECT_EQ(receive(), Reception::message);
  EXPECT_EQ(message.word, "next");
  EXPECT_THAT(message.texts, IsEmpty());
}

TEST_F(Messages, BringOpenFilesThatNoOtherProgramInherits) {
  const FileDescriptor null(open("/dev/null", O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(platform::sendMessage(sockets.one, "word", {}, {null, null, null, null}));
  EXPECT_EQ(receive(), Reception::message);
  ASSERT_THAT(message.files, SizeIs(4));
  for (const FileDescriptor &file : message.files) {
    struct stat sent {};
    struct stat received {};
    ASSERT_EQ(fstat(null, &sent), 0);
    ASSERT_EQ(fstat(file, &received), 0);
    EXPECT_EQ(received.st_rdev, sent.st_rdev);
    EXPECT_EQ(fcntl(file, F_GETFD), FD_CLOEXEC);
  }
}

TEST_F(Messages, AnythingElseIsDroppedAndTheNextOneIsHeard) {
  for (const std::string &bytes :
       {std::string("x"), std::string(1000, '\xFF'), std::string("word\0\xFF", 6)}) {
    sendBytes(bytes);
    EXPECT_EQ(receive(), Reception::nothingOfOurs);
    EXPECT_EQ(message.word, "");
    EXPECT_THAT(message.files, IsEmpty());
  }
  ASSERT_TRUE(platform::sendMessage(sockets.one, "word", {}, {}));
  EXPECT_EQ(receive(), Reception::message);
}

TEST_F(Messages, MoreOpenFilesThanAnyMessageHasAreAllClosed) {
  // The other end of a pipe tells when the last one is closed.
  std::array<int, 2> pipe{};
  ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
  const FileDescriptor readEnd(pipe[0]);
  FileDescriptor writeEnd(pipe[1]);
  std::array<int, 5> files{};
  files.fill(writeEnd);
  char byte = 'x';
  iovec bytes{&byte, 1};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof files)> space{};
  msghdr header{};
  header.msg_iov = &bytes;
  header.msg_iovlen = 1;
  header.msg_control = space.data();
  header.msg_controllen = space.size();
  cmsghdr *part = CMSG_FIRSTHDR(&header);
  part->cmsg_level = SOL_SOCKET;
  part->cmsg_type = SCM_RIGHTS;
  part->cmsg_len = CMSG_LEN(sizeof files);
  std::copy(files.begin(), files.end(), reinterpret_cast<int *>(CMSG_DATA(part)));
  ASSERT_EQ(sendmsg(sockets.one, &header, 0), 1);
  EXPECT_EQ(receive(), Reception::nothingOfOurs);
  close(writeEnd.release());
  EXPECT_EQ(read(readEnd, &byte, 1), 0) << "somebody holds the pipe";
}

TEST_F(Messages, EndWithTheOtherSide) {
  ASSERT_TRUE(platform::sendMessage(sockets.one, "last", {}, {}));
  close(sockets.one.release());
  EXPECT_EQ(receive(), Reception::message);
  EXPECT_EQ(receive(), Reception::end);
}

TEST_F(Messages, AreNotSentWhereNobodyListens) {
  close(sockets.other.release());
  const platform::Outcome outcome = platform::sendMessage(sockets.one, "word", {}, {});
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "Broken pipe");
}

}  // namespace
