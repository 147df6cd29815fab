#include "tests/unit/RegistryFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

namespace {

using RecoveryRequest = RegistryFixture;

TEST_F(RecoveryRequest, TwoRequestsInARowAreMergedInTheFileAndInTheRecord) {
  peer.requestRecovery({{"a", 3}, {"b", 3}});
  peer.requestRecovery({{"b", 4}, {"c", 4}});
  const auto merged = ElementsAre(Pair("a", PropertyList(3)), Pair("b", PropertyList(4)),
                                  Pair("c", PropertyList(4)));
  EXPECT_THAT(recoveryRequest(), merged);
  EXPECT_THAT(peer.lastRequestedGenerations(), merged);
  EXPECT_EQ(postedRequests(), 2U);
  const std::string line =
      std::string("default ") + logName + "Asking the app for fresh bookmarks for 2 working copies";
  EXPECT_THAT(fakes.systemLogs.lines, ElementsAre(line, line));
}

TEST_F(RecoveryRequest, TheLogCountsTheWorkingCopiesOfThisRequestAlone) {
  peer.requestRecovery({{"a", 3}, {"b", 3}, {"c", 3}});
  peer.requestRecovery({{"d", 4}});
  const std::string beginning =
      std::string("default ") + logName + "Asking the app for fresh bookmarks for ";
  EXPECT_THAT(fakes.systemLogs.lines,
              ElementsAre(beginning + "3 working copies", beginning + "1 working copies"));
}

TEST_F(RecoveryRequest, AFileThatIsNoDictionaryIsReplacedByTheNewEntriesAlone) {
  fakes.propertyListFiles.reasons[requestPath] = "not a dictionary";
  peer.requestRecovery({{"a", 3}});
  EXPECT_THAT(recoveryRequest(), ElementsAre(Pair("a", PropertyList(3))));
}

TEST_F(RecoveryRequest, WhatElseTheFileHoldsIsKept) {
  fakes.propertyListFiles.files[requestPath] = {{"z", "something of the application's"}};
  peer.requestRecovery({{"a", 3}});
  EXPECT_THAT(recoveryRequest(),
              ElementsAre(Pair("a", PropertyList(3)),
                          Pair("z", PropertyList("something of the application's"))));
}

TEST_F(RecoveryRequest, TheFileIsCompleteBeforeTheNotificationIsPosted) {
  fakes.journal.clear();
  peer.requestRecovery({{"a", 3}});
  EXPECT_THAT(fakes.journal.calls(),
              ElementsAre("create directory /containers/group/FinderSync",
                          std::string("read ") + requestPath, std::string("write ") + requestPath,
                          "post com.morvane.finderSync.needBookmarks"));
}

TEST_F(RecoveryRequest, AFailedWriteStillCountsAsAskedAndIsNotified) {
  fakes.fileManager.directoriesCanBeCreated = false;
  fakes.propertyListFiles.filesCanBeWritten = false;
  peer.requestRecovery({{"a", 3}});
  EXPECT_EQ(peer.lastRequestedGenerations().size(), 1U);
  EXPECT_EQ(postedRequests(), 1U);
  EXPECT_EQ(fakes.systemLogs.lines.size(), 1U) << "only the request itself is logged";
}

TEST_F(RecoveryRequest, WithoutASharedDirectoryThereIsNoFileAndNoNotification) {
  fakes.fileManager.containers.clear();
  fakes.journal.clear();
  peer.requestRecovery({{"a", 3}});
  EXPECT_THAT(fakes.journal.calls(), IsEmpty());
  EXPECT_THAT(peer.lastRequestedGenerations(), ElementsAre(Pair("a", PropertyList(3))));
}

}  // namespace
