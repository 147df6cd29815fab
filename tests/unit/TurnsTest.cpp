#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/process/guard/Turns.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class TurnsTest : public ::testing::Test {
 protected:
  // Work of so many steps, each of which writes its name down.
  Turns::Step work(const std::string &name, int steps) {
    return [this, name, steps]() mutable {
      done.push_back(name);
      return --steps > 0;
    };
  }

  void takeAll() {
    while (!turns.isEmpty()) {
      turns.takeOne();
    }
  }

  Turns turns;
  std::vector<std::string> done;
};

TEST_F(TurnsTest, ClientsHaveAStepEachInTurn) {
  turns.add(":1.1", work("much", 4));
  turns.add(":1.2", work("little", 1));
  turns.add(":1.3", work("some", 2));
  takeAll();
  EXPECT_THAT(done, ElementsAre("much", "little", "some", "much", "some", "much", "much"));
}

TEST_F(TurnsTest, TheWorkOfOneClientIsDoneInItsOrder) {
  turns.add(":1.1", work("first", 2));
  turns.add(":1.1", work("second", 1));
  turns.add(":1.2", work("other", 3));
  turns.add(":1.1", work("third", 1));
  takeAll();
  EXPECT_THAT(done, ElementsAre("first", "other", "first", "other", "second", "other", "third"));
}

TEST_F(TurnsTest, WhoeverComesLateIsNextAfterThoseWhoAreThere) {
  turns.add(":1.1", work("much", 3));
  turns.add(":1.2", work("much, too", 3));
  turns.takeOne();
  turns.add(":1.3", work("late", 1));
  takeAll();
  EXPECT_THAT(done,
              ElementsAre("much", "much, too", "much", "late", "much, too", "much", "much, too"));
}

TEST_F(TurnsTest, AStepMayAddWork) {
  turns.add(":1.1", [this] {
    turns.add(":1.1", work("own", 1));
    turns.add(":1.2", work("other", 1));
    return false;
  });
  takeAll();
  EXPECT_THAT(done, ElementsAre("other", "own"));
}

TEST_F(TurnsTest, TheWorkOfAClientThatIsForgottenIsNotDone) {
  turns.add(":1.1", work("forgotten", 2));
  turns.add(":1.1", work("forgotten, too", 2));
  turns.add(":1.2", work("other", 2));
  turns.takeOne();
  done.clear();
  turns.forget(":1.1");
  turns.forget(":1.3");
  takeAll();
  EXPECT_THAT(done, ElementsAre("other", "other"));
  turns.forget(":1.2");
  EXPECT_TRUE(turns.isEmpty());
}

TEST_F(TurnsTest, WorkEndsWithItsLastStep) {
  auto kept = std::make_shared<int>(0);
  turns.add(":1.1", [kept] { return false; });
  takeAll();
  EXPECT_EQ(kept.use_count(), 1);
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(TurnsTest, WhoeverIsHeldHasNoTurnUntilReleased) {
  turns.add(":1.1", work("held", 2));
  turns.add(":1.2", work("other", 2));
  turns.hold(":1.1");
  turns.add(":1.1", work("later", 1));
  takeAll();
  EXPECT_THAT(done, ElementsAre("other", "other"));

  turns.release(":1.1");
  takeAll();
  EXPECT_THAT(done, ElementsAre("other", "other", "held", "held", "later"));
}

TEST_F(TurnsTest, AStepMayHoldItsOwnClient) {
  turns.add(":1.1", [this] {
    done.emplace_back("holds");
    turns.hold(":1.1");
    return false;
  });
  turns.add(":1.1", work("next", 1));
  takeAll();
  EXPECT_THAT(done, ElementsAre("holds"));
  turns.release(":1.1");
  takeAll();
  EXPECT_THAT(done, ElementsAre("holds", "next"));
}

TEST_F(TurnsTest, WhoeverIsHeldAndForgottenHasNothingLeft) {
  turns.add(":1.1", work("forgotten", 1));
  turns.hold(":1.1");
  turns.forget(":1.1");
  turns.release(":1.1");
  EXPECT_TRUE(turns.isEmpty());
  turns.release(":1.1");
  turns.add(":1.1", work("new", 1));
  takeAll();
  EXPECT_THAT(done, ElementsAre("new"));
}

TEST_F(TurnsTest, WhoeverIsReleasedByItsOwnStepHasOnePlace) {
  turns.add(":1.1", [this] {
    turns.hold(":1.1");
    turns.release(":1.1");
    done.emplace_back("both");
    return false;
  });
  turns.add(":1.1", work("next", 1));
  turns.add(":1.2", work("other", 1));
  takeAll();
  EXPECT_THAT(done, ElementsAre("both", "other", "next"));
}

}  // namespace
