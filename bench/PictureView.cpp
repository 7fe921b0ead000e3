// How long the picture view takes to repaint while a 12-megapixel picture is panned and zoomed.
// Runs without a display. Times are of the processor, all threads added up, beside those of the
// clock.
#include "bench/Report.h"
#include "editor/CIFImageEditorView.h"
#include "platform/drawing/Picture.h"

#include <QApplication>
#include <QScrollBar>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace {

double processorTime()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6;
}

double clockTime()
{
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

struct Times {
    std::vector<double> processor, clock;
};

std::vector<bench::Row> rows;
std::string pattern;

void printAndKeep(const std::string& name, Times times)
{
    std::printf("%-34s", name.c_str());
    for (std::vector<double>* t : {&times.processor, &times.clock}) {
        std::sort(t->begin(), t->end());
        std::printf(" %9.2f %9.2f %9.2f", (*t)[t->size() / 2], (*t)[t->size() * 95 / 100],
                    t->back());
    }
    std::printf("\n");
    const std::vector<double>& t = times.processor;
    rows.push_back({name, 12, t[t.size() / 2], t.front(), static_cast<int>(t.size())});
}

// Each step and the repaint it causes, flushed to the window. Answers the step that took longest.
int measure(const std::string& name, int steps, const std::function<void(int)>& step)
{
    if (name.find(pattern) == std::string::npos)
        return 0;
    Times times;
    for (int i = 0; i < steps; ++i) {
        const double processor = processorTime(), clock = clockTime();
        step(i);
        QApplication::sendPostedEvents();
        QApplication::processEvents();
        times.processor.push_back(processorTime() - processor);
        times.clock.push_back(clockTime() - clock);
    }
    const auto worst = std::max_element(times.processor.begin(), times.processor.end());
    const int longest = static_cast<int>(worst - times.processor.begin());
    printAndKeep(name, times);
    return longest;
}

std::string named(const char* format, double number)
{
    char name[64];
    std::snprintf(name, sizeof name, format, number);
    return name;
}

// Every pixel lets something through.
imaging::BitmapRef seeThrough(const imaging::Bitmap& opaque)
{
    const auto result =
        imaging::Bitmap::make(opaque.width(), opaque.height(), imaging::PixelFormat::Rgba8);
    for (int y = 0; y < opaque.height(); ++y) {
        const auto* in = opaque.rowAs<std::uint32_t>(y);
        auto* out = result->rowAs<std::uint32_t>(y);
        for (int x = 0; x < opaque.width(); ++x)
            out[x] = (in[x] & 0xffffff) | std::uint32_t(40 + (x / 5 + y / 3) % 200) << 24;
    }
    return result;
}

imaging::BitmapRef gradient(int width, int height)
{
    const auto result = imaging::Bitmap::make(width, height, imaging::PixelFormat::Rgba8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            result->rowAs<std::uint32_t>(y)[x] = 0xff000000 | std::uint32_t(x + y * 257);
    return result;
}

class Bench {
public:
    Bench()
    {
        _scroll.resize(1600, 1200);
        _scroll.show();
        std::printf("window %d x %d, %g device pixels to a point; milliseconds\n", _scroll.width(),
                    _scroll.height(), _view.devicePixelRatioF());
        std::printf("%-34s %29s %29s\n", "", "processor: median, 95 %, worst",
                    "clock: median, 95 %, worst");
    }

    void panAndZoom(const imaging::BitmapRef& bitmap, const std::string& what)
    {
        open(bitmap);
        for (const float scale : {0.2f, 0.3f, 0.45f, 0.6f, 0.9f, 1.0f, 1.4f, 3.0f, 20.0f}) {
            zoomTo(scale);
            measure(what + named("repaint whole at %g", double(scale)), 60,
                    [&](int) { _view.update(); });
            if (_scroll.horizontalScrollBar()->maximum() == 0)
                continue;
            measure(what + named("pan 200 steps at %g", double(scale)), 200, [&](int i) {
                // Forth and back again before an end is reached.
                const int sign = i % 40 < 20 ? 1 : -1;
                _scroll.setScrollPosition(_scroll.scrollPosition() + QPoint(17, 11) * sign);
            });
        }
        const auto scaleOf = [](int i) { return 0.02f * std::pow(80 / 0.02f, float(i) / 399); };
        const int worst = measure(what + "zoom 0.02 to 80", 400,
                                  [&](int i) { _view.setScaleFactor(scaleOf(i)); });
        std::printf("%34s %g\n", "longest at", double(scaleOf(worst)));
    }

    void dragSelection(const imaging::BitmapRef& bitmap)
    {
        open(bitmap);
        _view.setSelection({1000, 700, 1500, 1200});
        for (const float scale : {0.3f, 1.0f}) {
            zoomTo(scale);
            measure(named("drag the selection at %g", double(scale)), 200, [&](int i) {
                _view.setSelection({1000.0 + i, 700, 1500, 1200});
            });
            measure(named("repaint whole, selected, at %g", double(scale)), 60,
                    [&](int) { _view.update(); });
        }
        _view.setTouched(false);
    }

    void dragSplit(const imaging::BitmapRef& bitmap, const imaging::BitmapRef& original)
    {
        open(bitmap);
        _view.setOriginal(drawing::Picture::fromBitmap(original));
        for (const float scale : {0.3f, 1.0f}) {
            zoomTo(scale);
            _view.setSplit(0.4);
            measure(named("drag the split at %g", double(scale)), 200,
                    [&](int i) { _view.setSplit(0.4 + 0.001 * i); });
            measure(named("repaint whole, split, at %g", double(scale)), 60,
                    [&](int) { _view.update(); });
        }
        _view.setSplit({});
        _view.setOriginal(nullptr);
    }

    // As while a parameter is dragged.
    void showResults(const imaging::BitmapRef& bitmap)
    {
        open(bitmap);
        zoomTo(0.3f);
        const auto another = [&] { _view.setPicture(drawing::Picture::fromBitmap(bitmap)); };
        measure("show another picture at 0.3", 20, [&](int) {
            another();
            settle();
        });
        for (const float scale : {0.3f, 1.0f}) {
            zoomTo(scale);
            const double ratio = _view.devicePixelRatioF();
            for (const double coarser : {1.0, 2.0}) {
                const auto side = [&](double points) {
                    return std::max(int(points * double(scale) * ratio / coarser), 1);
                };
                const auto part = _view.visibleRect();
                const auto pixels = gradient(side(part.width), side(part.height));
                const std::string density =
                    named(coarser == 1 ? " at %g" : ", coarse, at %g", double(scale));
                measure("a part arrives" + density, 60,
                        [&](int) { _view.showPixelsInRect(pixels, part); });
                measure("a part after a picture" + density, 20, [&](int) {
                    another();
                    _view.showPixelsInRect(pixels, part);
                });
                another();
                settle();
            }
        }
    }

private:
    void open(const imaging::BitmapRef& bitmap)
    {
        _view.setPicture(drawing::Picture::fromBitmap(bitmap));
        _view.updateSize();
        zoomTo(0.02f);
    }
    void zoomTo(float scale)
    {
        _view.setScaleFactor(scale);
        settle();
    }
    void settle()
    {
        do
            QApplication::processEvents();
        while (!_view.showsFinalPixels());
        QApplication::processEvents();
    }

    editor::PictureScrollView _scroll;
    CIFImageEditorView& _view = _scroll.pictureView();
};

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const bench::Arguments arguments = bench::parse(argc, argv);
    pattern = arguments.pattern;
    QApplication application(argc, argv);
    const auto picture = bench::testPicture(12);
    Bench bench;
    bench.panAndZoom(picture, "");
    const auto transparent = seeThrough(*picture);
    bench.panAndZoom(transparent, "see-through: ");
    bench.dragSelection(picture);
    bench.dragSplit(transparent, picture);
    bench.showResults(picture);
    if (!arguments.jsonFile.empty())
        bench::report(rows, arguments.jsonFile);
    return 0;
}
