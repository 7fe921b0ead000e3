// Every generator can be stopped, tells how far it is, and is as good as new afterwards.
#include "platform/foundation/Work.h"
#include "tests/generators/Generate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <stop_token>

using namespace support;
using foundation::Stopped;
using foundation::WorkScope;

namespace {

constexpr int kWidth = 240, kHeight = 180;

class StoppedGenerator : public testing::TestWithParam<std::string> {
protected:
    const std::shared_ptr<GLIFCoreObject> _generator = makeGenerator(GetParam());
    const Dictionary _attributes = defaultsOf(*_generator);
    LogRecorder _log;
};

struct Attempt {
    std::vector<double> reports;
    bool wasStopped = false;
};

// Makes the picture and its pixels; the report of that number asks to stop.
Attempt attempt(GLIFCoreObject& generator, const Dictionary& attributes, std::size_t stopAt)
{
    Attempt result;
    std::stop_source source;
    try {
        const WorkScope scope(source.get_token(), [&](double fraction) {
            result.reports.push_back(fraction);
            if (result.reports.size() == stopAt)
                source.request_stop();
        });
        bytesOf(generate(generator, kWidth, kHeight, attributes));
    } catch (const Stopped&) {
        result.wasStopped = true;
    }
    return result;
}

} // namespace

TEST_P(StoppedGenerator, MakesTheSamePictureAfterwards)
{
    const std::string fresh = bytesOf(generate(GetParam(), kWidth, kHeight, _attributes));
    std::srand(5);
    const int first = std::rand(), second = std::rand();
    int stops = 0;
    for (const std::size_t stopAt : {1, 2, 3, 8, 20, 60}) {
        const auto generator = makeGenerator(GetParam());
        stops += attempt(*generator, _attributes, stopAt).wasStopped;
        // The sequence of random numbers is the process's own again.
        std::srand(5);
        ASSERT_EQ(std::rand(), first);
        ASSERT_EQ(std::rand(), second);
        EXPECT_EQ(bytesOf(generate(*generator, kWidth, kHeight, _attributes)), fresh)
            << "stopped at report " << stopAt;
    }
    EXPECT_GE(stops, 1);
}

// Which also shows that there is nothing that it does not stop in.
TEST_P(StoppedGenerator, DoesNothingOnceAStopIsRequested)
{
    std::stop_source source;
    source.request_stop();
    {
        const WorkScope scope(source.get_token());
        EXPECT_THROW(bytesOf(generate(*_generator, kWidth, kHeight, _attributes)), Stopped);
    }
    EXPECT_EQ(bytesOf(generate(*_generator, kWidth, kHeight, _attributes)),
              bytesOf(generate(GetParam(), kWidth, kHeight, _attributes)));
}

TEST_P(StoppedGenerator, KeepsItsFieldWhenColoringItAgainIsStopped)
{
    generate(*_generator, kWidth, kHeight, _attributes);
    const int fields = _generator->fieldsComputed();
    Dictionary other = _attributes;
    other.set("GLIFColorRangeMin", 0.4f);
    other.set("GLIFSchemeKeyColor", 0.85f);
    std::stop_source source;
    source.request_stop();
    {
        const WorkScope scope(source.get_token());
        EXPECT_THROW(bytesOf(generate(*_generator, kWidth, kHeight, other)), Stopped);
    }
    generate(*_generator, kWidth, kHeight, other);
    EXPECT_EQ(_generator->fieldsComputed(), fields);
}

TEST_P(StoppedGenerator, ReportsProgressThatNeverFalls)
{
    const Attempt whole = attempt(*_generator, _attributes, 0);
    EXPECT_FALSE(whole.wasStopped);
    EXPECT_FALSE(whole.reports.empty());
    EXPECT_TRUE(std::ranges::is_sorted(whole.reports, std::ranges::less_equal()));
    for (const double fraction : whole.reports)
        EXPECT_TRUE(fraction > 0 && fraction <= 1) << fraction;
}

INSTANTIATE_TEST_SUITE_P(Registered, StoppedGenerator, testing::ValuesIn(generators::classNames()),
                         [](const auto& test) { return test.param; });
