// SPDX-License-Identifier: MIT
// What a run keeps of the calls that an error passes: no more at any depth.
#include "tlMacroExpander/src/Run/RunState.h"
#include <gtest/gtest.h>

namespace telv
{
namespace
{

TEST(KeptCallPlaces, AreTenOfSixHundredThousand)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    RunState& state = RunState::Of(run);
    const xstring text("name");
    for (int i = 0; i < 600'000; ++i)
        state.NoteCall(CallPlace::CALL_MACRO, text, text.begin(), 0);
    EXPECT_EQ(run.CallPlaces().size(), 10u);
    EXPECT_LT(run.CallPlaces().capacity(), 20u);
    EXPECT_EQ(run.MoreCallPlaces(), 599'990);
    state.ForgetErrors();
    EXPECT_EQ(run.CallPlaces().size(), 0u);
    EXPECT_EQ(run.MoreCallPlaces(), 0);
}

} // namespace
} // namespace telv
