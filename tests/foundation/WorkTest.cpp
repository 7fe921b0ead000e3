// Stopping and watching work: scopes, sections, and nothing at all without them.
#include "platform/foundation/Work.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

namespace foundation {
namespace {

using testing::ElementsAre;

TEST(Work, GoesOnWithoutAScope)
{
    EXPECT_FALSE(stopRequested());
    EXPECT_FALSE(stopToken().stop_possible());
    EXPECT_EQ(currentWork(), nullptr);
    EXPECT_NO_THROW(checkpoint());
    reportProgress(0.5);
    const ProgressPart part(0, 0.5);
    reportProgress(1);
}

TEST(Work, IsStoppedByTheTokenOfAnyScopeAroundIt)
{
    std::stop_source outer, inner;
    const WorkScope around(outer.get_token());
    {
        const WorkScope within(inner.get_token());
        EXPECT_NO_THROW(checkpoint());
        inner.request_stop();
        EXPECT_THROW(checkpoint(), Stopped);
    }
    EXPECT_NO_THROW(checkpoint());
    outer.request_stop();
    const WorkScope within({});
    EXPECT_TRUE(stopToken().stop_requested());
    EXPECT_THROW(checkpoint(), Stopped);
}

TEST(Work, IsStoppedOnItsOwnThreadAndThoseThatHelp)
{
    std::stop_source source;
    source.request_stop();
    const WorkScope scope(source.get_token(), [](double) { FAIL() << "a helper was heard"; });
    Work* const work = currentWork();
    std::thread([&] {
        EXPECT_NO_THROW(checkpoint());
        {
            const WorkShare share(work);
            const WorkScope within({});
            EXPECT_THROW(checkpoint(), Stopped);
            reportProgress(0.5);
        }
        EXPECT_NO_THROW(checkpoint());
    }).join();
}

TEST(Work, ReportsOnlyWhatIsMore)
{
    std::vector<double> heard;
    const WorkScope scope({}, [&](double fraction) { heard.push_back(fraction); });
    for (const double fraction : {0.0, 0.25, 0.25, 0.2, std::nan(""), 0.2501, 0.5, -1.0, 0.9999,
                                  1.0, 7.0, std::numeric_limits<double>::infinity()})
        reportProgress(fraction);
    EXPECT_THAT(heard, ElementsAre(0.25, 0.5, 0.9999, 1.0));
}

TEST(Work, ReportsSectionsAsPartsOfTheWhole)
{
    std::vector<double> heard;
    const WorkScope scope({}, [&](double fraction) { heard.push_back(fraction); });
    {
        const ProgressPart first(0, 0.5);
        reportProgress(0.5);
        {
            const ProgressPart secondHalf(0.5, 1);
            const WorkScope withoutAFunction({});
            reportProgress(0.5);
        }
        const ProgressPart unheard(0, 0);
        reportProgress(1);
    }
    ProgressSteps steps(4);
    steps.add(3);
    steps.add(1);
    EXPECT_THAT(heard, ElementsAre(0.25, 0.375, 0.75, 1.0));
}

} // namespace
} // namespace foundation
