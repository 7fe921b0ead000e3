// Vector files from elsewhere: sizes, broken ones, missing helpers, files that want too much.
#include "platform/drawing/Process.h"
#include "platform/drawing/VectorSources.h"
#include "tests/drawing/Support.h"

#include <cerrno>
#include <fstream>
#include <sys/wait.h>

namespace drawing {
namespace {

using testing::Message;

// One page without cross-reference table, which readers rebuild. Red, with its lower left blue.
std::string pdf(const std::string& page)
{
    const std::string content = "1 0 0 rg -999 -999 2000 2000 re f 0 0 1 rg 50 20 10 10 re f";
    return "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
           "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
           "3 0 obj<</Type/Page/Parent 2 0 R/Contents 4 0 R " +
           page +
           ">>endobj\n"
           "4 0 obj<</Length " +
           std::to_string(content.size()) + ">>stream\n" + content +
           "\nendstream endobj\ntrailer<</Root 1 0 R>>\n%%EOF\n";
}

std::string eps(const std::string& header, const std::string& body)
{
    return "%!PS-Adobe-3.0 EPSF-3.0\n" + header + "\n%%EndComments\n" + body;
}

std::string svg(const std::string& attributes, const std::string& body)
{
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" " +
           attributes + ">" + body + "</svg>";
}

Size sizeOf(const VectorSourceResult& source)
{
    EXPECT_TRUE(source) << source.error();
    return source ? (*source)->size() : Size{};
}

imaging::BitmapRef pixels(const VectorSourceResult& source, int width, int height)
{
    auto bitmap = source
                      ? (*source)->rasterize(width, height)
                      : foundation::Result<imaging::BitmapRef>(foundation::Error{source.error()});
    EXPECT_TRUE(bitmap) << bitmap.error();
    return bitmap ? *bitmap : nullptr;
}

TEST(VectorSource, PdfIsItsFirstPageCroppedAndTurned)
{
    const auto plain = pdfSource(pdf("/MediaBox[0 0 200 100]"));
    EXPECT_EQ(sizeOf(plain), (Size{200, 100}));
    const auto cropped = pdfSource(pdf("/MediaBox[0 0 200 100]/CropBox[50 20 90 40]"));
    EXPECT_EQ(sizeOf(cropped), (Size{40, 20}));
    const auto bitmap = pixels(cropped, 40, 20);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixel(*bitmap, 2, 17), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(pixel(*bitmap, 2, 7), (Rgba{255, 0, 0, 255}));
    const auto turned = pdfSource(pdf("/MediaBox[0 0 200 100]/CropBox[50 20 90 40]/Rotate 90"));
    EXPECT_EQ(sizeOf(turned), (Size{20, 40}));
    const auto clockwise = pixels(turned, 21, 43); // not in proportion: stretched
    ASSERT_TRUE(clockwise);
    EXPECT_EQ(pixel(*clockwise, 2, 2), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(pixel(*clockwise, 2, 40), (Rgba{255, 0, 0, 255}));
}

TEST(VectorSource, EpsIsItsBoundingBox)
{
    const std::string body = "1 0 0 setrgbcolor 50 20 10 10 rectfill";
    const auto plain = epsSource(eps("%%BoundingBox: 50 20 70 30", body));
    EXPECT_EQ(sizeOf(plain), (Size{20, 10}));
    const auto bitmap = pixels(plain, 40, 20);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixel(*bitmap, 5, 10), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(pixel(*bitmap, 30, 10), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(
        sizeOf(epsSource(eps("%%BoundingBox: 0 0 8 9\n%%HiResBoundingBox: 0.25 0 7.75 8.5", body))),
        (Size{7.5, 8.5}));
    EXPECT_EQ(sizeOf(epsSource(
                  eps("%%BoundingBox: (atend)", body + "\n%%Trailer\n%%BoundingBox: 1 1 4 5\n"))),
              (Size{3, 4}));
    // showpage, and more than one page: the drawing is what was drawn.
    const auto shown =
        pixels(epsSource(eps("%%BoundingBox: 50 20 70 30", body + " showpage")), 20, 10);
    ASSERT_TRUE(shown);
    EXPECT_EQ(pixel(*shown, 5, 5), (Rgba{255, 0, 0, 255}));
    // A preview in front.
    const std::string inner = eps("%%BoundingBox: 50 20 70 30", body);
    std::string preview("\xC5\xD0\xD3\xC6\x20\0\0\0", 8);
    preview += std::string{static_cast<char>(inner.size()), 0, 0, 0} + std::string(20, '\xFF');
    ASSERT_LT(inner.size(), 128u);
    EXPECT_EQ(sizeOf(epsSource(preview + inner + "preview bytes")), (Size{20, 10}));
}

TEST(VectorSource, SvgCountsPixelsAsPoints)
{
    EXPECT_EQ(sizeOf(svgSource(svg("width='30' height='20'", ""))), (Size{30, 20}));
    EXPECT_EQ(sizeOf(svgSource(svg("width='1in' height='72pt'", ""))), (Size{96, 96}));
    EXPECT_EQ(sizeOf(svgSource(svg("viewBox='5 5 40 10'", ""))), (Size{40, 10}));
    EXPECT_EQ(sizeOf(svgSource(svg("", "<rect x='9' width='12' height='7'/>"))), (Size{12, 7}));
    const auto bitmap = pixels(
        svgSource(svg("width='30' height='20'",
                      "<rect y='10' width='15' height='10' fill='#0000ff' fill-opacity='.5'/>")),
        60, 20);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixel(*bitmap, 29, 19), (Rgba{0, 0, 255, 128}));
    EXPECT_EQ(pixel(*bitmap, 31, 19).alpha, 0);
    EXPECT_EQ(pixel(*bitmap, 29, 9).alpha, 0);
}

TEST(VectorSource, SvgLoadsNothingFromOutside)
{
    const std::string folder = CIF_TEST_OUTPUT "/drawing";
    keepForTheEye(*bitmapFrom(4, 4, [](int, int) { return Rgba{255, 0, 0, 255}; }), "outside");
    std::ofstream(folder + "/outside.txt") << "<rect width='20' height='20' fill='red'/>";
    const std::string secret = "file://" + folder + "/outside";
    for (const std::string& document : {
             svg("width='20' height='20'",
                 "<image width='20' height='20' xlink:href='" + secret + ".png'/>"),
             svg("width='20' height='20'",
                 "<image width='20' height='20' href='" + folder + "/outside.png'/>"),
             svg("width='20' height='20' xmlns:xi='http://www.w3.org/2001/XInclude'",
                 "<xi:include href='" + secret + ".txt'/>"),
             "<!DOCTYPE svg [<!ENTITY secret SYSTEM '" + secret + ".txt'>]>" +
                 svg("width='20' height='20'", "&secret;"),
         }) {
        const auto source = svgSource(document);
        if (!source)
            continue; // refused altogether
        const auto bitmap = (*source)->rasterize(20, 20);
        if (bitmap) {
            EXPECT_EQ(pixel(**bitmap, 10, 10).alpha, 0) << document;
        }
    }
    // The same picture inside the document is drawn: the test would notice.
    const std::string inside = "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR4nGP4z8DwHwA"
                               "FAAH/iZk9HQAAAABJRU5ErkJggg==";
    const auto bitmap =
        pixels(svgSource(svg("width='20' height='20'",
                             "<image width='20' height='20' xlink:href='data:image/png;base64," +
                                 inside + "'/>")),
               20, 20);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixel(*bitmap, 10, 10), (Rgba{255, 0, 0, 255}));
}

TEST(VectorSource, EpsReachesNoFiles)
{
    // Not even in the folder for temporary files, which its interpreter would leave open to it.
    const auto folder = std::filesystem::temp_directory_path();
    const std::string read = folder / "cif-test-read.ps", written = folder / "cif-test-written.ps";
    std::ofstream(read) << "1 0 0 setrgbcolor 0 0 20 20 rectfill";
    for (const std::string& body : {"(" + read + ") run", "(" + written + ") (w) file closefile"}) {
        const auto source = epsSource(eps("%%BoundingBox: 0 0 20 20", body));
        ASSERT_TRUE(source);
        const auto bitmap = (*source)->rasterize(20, 20);
        ASSERT_FALSE(bitmap);
        EXPECT_EQ(bitmap.error(), "EPS picture could not be drawn: gs failed");
    }
    EXPECT_TRUE(std::filesystem::remove(read));
    EXPECT_FALSE(std::filesystem::remove(written));
}

TEST(VectorSource, SaysAtOnceWhatIsWrong)
{
    const auto error = [](const VectorSourceResult& source) {
        return source ? "accepted" : source.error();
    };
    EXPECT_EQ(error(pdfSource("")), "not a PDF file");
    EXPECT_EQ(error(pdfSource("%PDF-1.7\nrubbish")),
              "PDF file is broken, encrypted or without pages");
    EXPECT_EQ(error(pdfSource(pdf("/MediaBox[0 0 100001 10]"))),
              "PDF picture is too large (at most 100000 points a side)");
    EXPECT_EQ(error(epsSource("")), "not an EPS file");
    EXPECT_EQ(error(epsSource(eps("", "showpage"))), "EPS file has no bounding box");
    EXPECT_EQ(error(epsSource(eps("%%BoundingBox: 0 0 9", ""))), "EPS file has no bounding box");
    EXPECT_EQ(error(epsSource(eps("%%BoundingBox: 0 0 -5 9", ""))),
              "EPS picture has no usable size");
    EXPECT_EQ(error(epsSource(eps("%%BoundingBox: 0 0 1e9 9", ""))),
              "EPS picture is too large (at most 100000 points a side)");
    EXPECT_EQ(error(epsSource(std::string("\xC5\xD0\xD3\xC6", 4) + std::string(40, '\xEE'))),
              "not an EPS file");
    EXPECT_TRUE(error(svgSource("")).starts_with("SVG file is broken"));
    EXPECT_TRUE(error(svgSource("<svg")).starts_with("SVG file is broken"));
    EXPECT_TRUE(error(svgSource("<html/>")).starts_with("SVG file is broken"));
    EXPECT_EQ(error(svgSource(svg("width='0' height='9'", ""))), "SVG picture has no usable size");
    EXPECT_EQ(error(svgSource(svg("width='1e9' height='9'", ""))),
              "SVG picture is too large (at most 100000 points a side)");
    for (const auto& source : {pdfSource("\n"), epsSource("\n"), svgSource("\n")})
        EXPECT_EQ(error(source).find('\n'), std::string::npos);
}

TEST(VectorSource, RefusesSizesItCannotDraw)
{
    for (const auto& source :
         {pdfSource(pdf("/MediaBox[0 0 20 10]")), epsSource(eps("%%BoundingBox: 0 0 20 10", "")),
          svgSource(svg("width='20' height='10'", ""))}) {
        ASSERT_TRUE(source) << source.error();
        EXPECT_FALSE((*source)->rasterize(0, 5));
        EXPECT_FALSE((*source)->rasterize(32'768, 5));
        EXPECT_TRUE((*source)->rasterize(3000, 1)); // far from its proportions
    }
}

class ChangedPath {
public:
    explicit ChangedPath(const std::string& path) : _former(std::getenv("PATH"))
    {
        setenv("PATH", path.c_str(), 1);
    }
    ~ChangedPath() { setenv("PATH", _former.c_str(), 1); }

private:
    std::string _former;
};

TEST(VectorSource, NamesThePackageOfAMissingProgram)
{
    for (const char* path : {"", "/nowhere", ".", "::relative/bin"}) {
        const ChangedPath changed(path);
        EXPECT_EQ(pdfSource(pdf("/MediaBox[0 0 20 10]")).error(),
                  "PDF needs pdftocairo (package poppler-utils)");
        EXPECT_EQ(epsSource(eps("%%BoundingBox: 0 0 20 10", "")).error(),
                  "EPS needs gs (package ghostscript)");
    }
}

TEST(Process, PassesInputAndArgumentsAsTheyAre)
{
    const ProcessLimits limits{std::chrono::seconds(20), 10'000'000};
    std::string input(3'000'000, 'x'); // far more than a pipe holds
    input[1'000'000] = '\0';
    const auto copy = runProgram(*findProgram("cat"), {}, input, limits);
    ASSERT_TRUE(copy) << copy.error();
    EXPECT_TRUE(*copy == input);
    const auto words =
        runProgram(*findProgram("printf"), {"%s|", "$HOME", "a b;`id`", ""}, "", limits);
    ASSERT_TRUE(words) << words.error();
    EXPECT_EQ(*words, "$HOME|a b;`id`||");
    // Its temporary folder is there for it, and gone afterwards.
    const auto folder =
        runProgram(*findProgram("sh"), {"-c", "touch $TMPDIR/x && echo $TMPDIR"}, "", limits);
    ASSERT_TRUE(folder) << folder.error();
    EXPECT_FALSE(std::filesystem::exists(folder->substr(0, folder->size() - 1)));
}

TEST(Process, EndsWhatRunsTooLongOrSaysTooMuchAndLeavesNothingBehind)
{
    using std::chrono::milliseconds;
    const auto start = std::chrono::steady_clock::now();
    const auto sleeping = runProgram(*findProgram("sleep"), {"60"}, "", {milliseconds(1100), 100});
    EXPECT_EQ(sleeping.error(), "sleep took longer than 1 seconds");
    // Its output closed long before its end.
    const auto shell =
        runProgram(*findProgram("sh"), {"-c", "exec >&-; sleep 60"}, "", {milliseconds(300), 100});
    EXPECT_FALSE(shell);
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(10'000));
    EXPECT_EQ(runProgram(*findProgram("yes"), {}, "", {milliseconds(20'000), 100'000}).error(),
              "yes wrote more than expected");
    EXPECT_EQ(runProgram(*findProgram("false"), {}, "", {milliseconds(20'000), 100}).error(),
              "false failed");
    EXPECT_FALSE(runProgram("/nowhere/at-all", {}, "", {milliseconds(20'000), 100}));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

} // namespace
} // namespace drawing
