// Loops and renderings that are given up, and what they report.
#include "platform/foundation/Work.h"
#include "platform/imaging/Filter.h"
#include "platform/imaging/Kernel.h"
#include "platform/imaging/Parallel.h"
#include "tests/support/Support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

using namespace imaging;
using foundation::Stopped;
using foundation::WorkScope;
using support::Rgba;

namespace {

// Asks for a stop after so many lanes of it have been computed.
Image stopping(std::stop_source source, int lanes)
{
    struct Shared {
        std::stop_source source;
        std::atomic<int> left;
    };
    const auto shared = std::make_shared<Shared>(std::move(source), lanes);
    return generate([shared](const Coord& at) {
        if (--shared->left == 0)
            shared->source.request_stop();
        return Px{at.x() * F(0.0f), at.y() * F(0.0f), F(0.0f), F(1.0f)};
    });
}

} // namespace

TEST(StoppedLoops, LeaveOutThePiecesThatAreLeft)
{
    for (const bool threaded : {true, false}) {
        std::stop_source source;
        std::atomic<int> done = 0;
        const WorkScope scope(source.get_token());
        EXPECT_THROW(parallelRows(0, 100'000, 1, threaded,
                                  [&](int, int) {
                                      if (++done == 10)
                                          source.request_stop();
                                  }),
                     Stopped);
        EXPECT_GE(done, 10);
        EXPECT_LT(done, 100'000);
    }
}

TEST(StoppedLoops, CanBeLeftFromAnyPieceOfALoopInALoop)
{
    std::stop_source source;
    std::atomic<int> inner = 0, after = 0;
    {
        const WorkScope scope(source.get_token());
        EXPECT_THROW(parallelRows(0, 200, 1,
                                  [&](int, int) {
                                      parallelRows(0, 50, 1, [&](int, int) {
                                          if (++inner == 500)
                                              source.request_stop();
                                          foundation::checkpoint();
                                      });
                                      ++after;
                                  }),
                     Stopped);
    }
    EXPECT_LT(after, 200);
    // The threads that helped are free for other work.
    std::atomic<int> later = 0;
    parallelRows(0, 1000, 1, [&](int, int) {
        foundation::checkpoint();
        ++later;
    });
    EXPECT_EQ(later, 1000);
}

TEST(StoppedLoops, StopOnlyTheWorkOfTheirOwnThread)
{
    std::stop_source source;
    source.request_stop();
    const WorkScope scope(source.get_token());
    std::thread([] {
        std::atomic<int> done = 0;
        EXPECT_NO_THROW(parallelRows(0, 1000, 1, [&](int, int) { ++done; }));
        EXPECT_EQ(done, 1000);
    }).join();
}

TEST(StoppedRendering, ThrowsInAScopeAndIsNullForATokenOfItsOwn)
{
    for (const bool threaded : {true, false}) {
        std::stop_source source;
        const Image image = stopping(source, 500);
        EXPECT_FALSE(render(image, {0, 0, 64, 2000}, PixelFormat::Rgba8,
                            {.stop = source.get_token(), .threaded = threaded}));
        EXPECT_TRUE(source.stop_requested());
        std::stop_source another;
        const WorkScope scope(another.get_token());
        EXPECT_THROW(render(stopping(another, 500), {0, 0, 64, 2000}, PixelFormat::Rgba8,
                            {.stop = {}, .threaded = threaded}),
                     Stopped);
        // A token of its own does not hide the scope's.
        EXPECT_THROW(render(stopping({}, 0), {0, 0, 64, 2000}, PixelFormat::Rgba8,
                            {.stop = std::stop_source().get_token(), .threaded = threaded}),
                     Stopped);
    }
}

TEST(StoppedRendering, StopsTheInputsOfBlursAndWarpsToo)
{
    std::stop_source source;
    const auto blur = Filter::filterWithName("CIGaussianBlur");
    ASSERT_TRUE(blur);
    blur->setDefaults();
    blur->setValueForKey(stopping(source, 500).node(), "inputImage");
    const Image image = blur->outputImage();
    {
        const WorkScope scope(source.get_token());
        EXPECT_THROW(render(image, {0, 0, 64, 2000}, PixelFormat::Rgba8), Stopped);
    }
    // The same graph is rendered whole afterwards.
    EXPECT_TRUE(render(image, {0, 0, 64, 2000}, PixelFormat::Rgba8));
}

TEST(StoppedRendering, ReportsItsRows)
{
    std::vector<double> heard;
    const WorkScope scope({}, [&](double fraction) { heard.push_back(fraction); });
    const Image image = stopping({}, 0);
    ASSERT_TRUE(render(image, {0, 0, 64, 2000}, PixelFormat::Rgba8));
    EXPECT_GE(heard.size(), 3u);
    EXPECT_TRUE(std::ranges::is_sorted(heard, std::ranges::less_equal()));
    EXPECT_LE(heard.back(), 1);
}
