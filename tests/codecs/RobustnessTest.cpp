// Broken and hostile files end in one line, never in a crash, and never in a word on standard
// error.
#include "tests/codecs/Samples.h"

#include <gmock/gmock.h>
#include <png.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <sys/resource.h>

using testing::HasSubstr;
using namespace samples;

namespace {

// Decoding and what it says: empty for a picture.
std::string outcome(const std::string& file)
{
    const auto picture = codecs::decodePicture(file, "sample");
    if (picture) {
        EXPECT_TRUE((*picture)->bitmap());
        return {};
    }
    EXPECT_THAT(picture.error(), testing::StartsWith("sample: "));
    EXPECT_EQ(picture.error().find('\n'), std::string::npos);
    return picture.error();
}

long peakKilobytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class Mangled : public testing::TestWithParam<std::pair<std::string, std::string>> {
protected:
    Mangled() { testing::internal::CaptureStderr(); }
    ~Mangled() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }
};

} // namespace

TEST_P(Mangled, EveryTruncationIsAnError)
{
    const auto& [name, file] = GetParam();
    ASSERT_EQ(outcome(file), "");
    // Behind the pixels of a JPEG of one scan comes its end marker, behind the last directory of a
    // TIFF the four zeros that say so.
    const std::size_t spare = name == "baseline.jpg" || name == "cmyk.jpg" ? 2
                              : name == "rgba.tif"                         ? 4
                                                                           : 0;
    for (std::size_t length = 0; length + spare < file.size(); ++length)
        EXPECT_NE(outcome(file.substr(0, length)), "") << length;
    for (std::size_t length = file.size() - spare; length < file.size(); ++length)
        outcome(file.substr(0, length));
    EXPECT_THAT(outcome(file.substr(0, file.size() * 3 / 4)), HasSubstr("truncated"));
}

TEST_P(Mangled, FlippedBitsAndOverwrittenBytesDoNoHarm)
{
    const auto& [name, file] = GetParam();
    std::mt19937 random(7);
    int errors = 0;
    constexpr int kRounds = 600;
    for (int round = 0; round < kRounds; ++round) {
        std::string broken = file;
        // Mostly near the front, where the structure is.
        const std::size_t reach =
            round % 2 ? broken.size() : std::min<std::size_t>(broken.size(), 96);
        for (unsigned i = 0; i <= random() % 3; ++i) {
            char& byte = broken[random() % reach];
            byte = random() % 2 ? static_cast<char>(byte ^ 1 << random() % 8)
                                : static_cast<char>(random() % 2 ? 0xFF : random());
        }
        errors += !outcome(broken).empty();
    }
    EXPECT_GT(errors, kRounds / 50);
}

INSTANTIATE_TEST_SUITE_P(Files, Mangled, testing::ValuesIn(smallFiles()), [](const auto& info) {
    std::string name = info.param.first;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
});

TEST(Absurd, HeadersAreRefusedBeforeMemoryIsTaken)
{
    const long before = peakKilobytes();
    const auto big = [](std::uint32_t v) {
        return std::string{char(v >> 24), char(v >> 16), char(v >> 8), char(v)};
    };
    const auto png = [&](std::uint32_t width, std::uint32_t height) {
        using namespace std::string_literals;
        return "\x89PNG\r\n\x1A\n"s +
               pngChunk("IHDR", big(width) + big(height) + "\x08\x06\0\0\0"s) +
               pngChunk("IDAT", "\x78\x9C\x03\0\0\0\0\x01"s) + pngChunk("IEND", "");
    };
    EXPECT_THAT(errorOf(png(100'000, 100'000)), HasSubstr("too large: 100000 x 100000"));
    EXPECT_THAT(errorOf(png(30'000, 30'000)), HasSubstr("truncated PNG"));
    EXPECT_THAT(errorOf(png(200'000, 1)), HasSubstr("too large: 200000 x 1 "));
    EXPECT_THAT(errorOf(png(0x7FFF'FFFF, 0x7FFF'FFFF)), HasSubstr("too large"));
    EXPECT_NE(errorOf(png(0xFFFF'FFFF, 0)), "");

    for (auto& [name, file] : smallFiles()) {
        if (name.ends_with(".jpg")) {
            // Behind the start-of-frame marker: length, precision, height, width.
            const std::size_t frame =
                file.find(name == "progressive.jpg" ? "\xFF\xC2" : "\xFF\xC0");
            ASSERT_NE(frame, std::string::npos);
            file.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
            EXPECT_THAT(errorOf(file), HasSubstr("too large: 65500 x 65500")) << name;
            file.replace(frame + 5, 4, "\x40\x00\x40\x00", 4);
            EXPECT_THAT(errorOf(file), HasSubstr("truncated JPEG")) << name;
        }
        if (name == "animated.webp") {
            const std::size_t canvas = file.find("VP8X") + 12;
            file.replace(canvas, 6, "\xFE\xFF\x00\xFE\xFF\x00", 6);
            EXPECT_THAT(errorOf(file), HasSubstr("too large: 65535 x 65535"));
        }
    }
    Tiff tiff{2, 2, 8, 1, 1, [](int, int, int) { return 0; }};
    std::string file = tiffFile(tiff);
    const std::string tag("\x00\x01\x03\x00\x01\x00\x00\x00\x02\x00", 10);
    std::size_t at = file.find(tag);
    ASSERT_NE(at, std::string::npos);
    file.replace(at + 2, 10, std::string("\x04\x00\x01\x00\x00\x00\xA0\x86\x01\x00", 10));
    at = file.find(std::string("\x01\x01\x03\x00\x01\x00\x00\x00\x02\x00", 10));
    ASSERT_NE(at, std::string::npos);
    file.replace(at + 2, 10, std::string("\x04\x00\x01\x00\x00\x00\xA0\x86\x01\x00", 10));
    EXPECT_THAT(errorOf(file), HasSubstr("too large: 100000 x 100000"));
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer's shadow and its fill of fresh memory count as ours.
    (void)before;
#else
    EXPECT_LT(peakKilobytes() - before, 64 * 1024);
#endif
}

TEST(Absurd, VectorFilesThatAreOnlyABeginningAreErrors)
{
    for (const char* file : {"%PDF-1.5\n", "%!PS-Adobe-3.0 EPSF-3.0\n", "<svg", "<?xml?><svg"})
        EXPECT_NE(errorOf(file), "") << file;
}
