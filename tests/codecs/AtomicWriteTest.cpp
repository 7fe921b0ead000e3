// A file is written whole or not at all.
#include "platform/codecs/Codecs.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using codecs::writeFileAtomically;
using testing::HasSubstr;

namespace {

class AtomicWrite : public testing::Test {
protected:
    AtomicWrite() : _folder(fs::path(testing::TempDir()) / ("atomic-" + std::to_string(::getpid())))
    {
        fs::create_directories(_folder);
    }
    ~AtomicWrite() override { fs::remove_all(_folder); }

    static std::string content(const fs::path& file)
    {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::size_t fileCount() const
    {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(_folder), fs::directory_iterator()));
    }
    static mode_t modeOf(const fs::path& file)
    {
        struct stat status {};
        ::stat(file.c_str(), &status);
        return status.st_mode & 07777;
    }

    fs::path _folder;
};

} // namespace

TEST_F(AtomicWrite, MakesAFileWithTheUsualPermissionsAndKeepsThoseOfAnExistingOne)
{
    const fs::path file = _folder / "a.bin";
    const mode_t mask = ::umask(027);
    ASSERT_TRUE(writeFileAtomically(file, "first"));
    EXPECT_EQ(modeOf(file), 0640u);
    ::umask(mask);
    ::chmod(file.c_str(), 0604);
    ASSERT_TRUE(writeFileAtomically(file, "second"));
    EXPECT_EQ(modeOf(file), 0604u);
    EXPECT_EQ(content(file), "second");
    EXPECT_EQ(fileCount(), 1u);
}

TEST_F(AtomicWrite, FollowsLinksAndWritesToDevices)
{
    fs::create_directory(_folder / "deep");
    fs::create_symlink("deep/target", _folder / "inner");
    fs::create_symlink("inner", _folder / "link");
    ASSERT_TRUE(writeFileAtomically(_folder / "link", "through"));
    EXPECT_TRUE(fs::is_symlink(_folder / "link"));
    EXPECT_EQ(content(_folder / "deep/target"), "through");

    fs::create_symlink("loop", _folder / "loop");
    EXPECT_FALSE(writeFileAtomically(_folder / "loop", "x"));
    ASSERT_TRUE(writeFileAtomically("/dev/null", "x"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(AtomicWrite, SaysWhyItCannot)
{
    const fs::path missing = _folder / "out" / "x.png";
    EXPECT_EQ(writeFileAtomically(missing, "x").error(),
              "cannot write " + missing.string() + ": No such file or directory");
    EXPECT_THAT(writeFileAtomically(_folder, "x").error(), HasSubstr("Is a directory"));
    EXPECT_EQ(fileCount(), 0u);
}

TEST_F(AtomicWrite, LeavesNothingBehindWhenTheDiskIsFull)
{
    const fs::path file = _folder / "a.bin";
    ASSERT_TRUE(writeFileAtomically(file, "old"));
    // A limit on file sizes fails in the middle of the data, as a full disk does.
    rlimit former{};
    ::getrlimit(RLIMIT_FSIZE, &former);
    const rlimit small{1000, former.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto existing = writeFileAtomically(file, std::string(5000, 'x'));
    const auto fresh = writeFileAtomically(_folder / "b.bin", std::string(5000, 'x'));
    ::setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(existing.error(), HasSubstr("File too large"));
    EXPECT_FALSE(fresh);
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(fileCount(), 1u);
}

TEST_F(AtomicWrite, NamesTheFileWhenAPictureCannotBeEncoded)
{
    const auto picture =
        drawing::Picture::fromBitmap(imaging::Bitmap::makeClear(2, 2, imaging::PixelFormat::Rgba8));
    const fs::path file = _folder / "x.svg";
    EXPECT_THAT(codecs::writePicture(*picture, file, codecs::FileFormat::Svg, {}).error(),
                testing::StartsWith("cannot write " + file.string() + ": SVG needs"));
    EXPECT_EQ(fileCount(), 0u);
    ASSERT_TRUE(codecs::writePicture(*picture, file, codecs::FileFormat::Png, {}));
    EXPECT_TRUE(codecs::readPicture(file));
}

TEST_F(AtomicWrite, ReadingSaysWhatIsWrongWithTheFile)
{
    const fs::path empty = _folder / "empty.png";
    std::ofstream{empty};
    EXPECT_EQ(codecs::readPicture("nowhere/x.png").error(), "no such file: nowhere/x.png");
    EXPECT_EQ(codecs::readPicture(_folder).error(), _folder.string() + ": a folder, not a picture");
    EXPECT_EQ(codecs::readPicture(empty).error(), empty.string() + ": an empty file");
    EXPECT_EQ(codecs::readPicture("/dev/zero").error(), "/dev/zero: not a file");
    if (::geteuid() != 0) { // who may read everything is refused nothing
        ::chmod(empty.c_str(), 0);
        EXPECT_EQ(codecs::readPicture(empty).error(), empty.string() + ": permission denied");
    }
}
