// The catalogue directory is the library's one global state: each test starts without a catalogue,
// whatever the one before it set and wherever the tests are run.
#include "zat/zat.h"

#include <gtest/gtest.h>

namespace {

struct FreshState : ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo& /*test*/) override { SetPath("no catalogue/"); }
};

[[maybe_unused]] const bool registered = [] {
    ::testing::UnitTest::GetInstance()->listeners().Append(new FreshState);
    return true;
}();

} // namespace
