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

// Each step and the repaint it causes, flushed to the window.
void measure(const std::string& name, int steps, const std::function<void(int)>& step)
{
    if (name.find(pattern) == std::string::npos)
        return;
    Times times;
    for (int i = 0; i < steps; ++i) {
        const double processor = processorTime(), clock = clockTime();
        step(i);
        QApplication::sendPostedEvents();
        QApplication::processEvents();
        times.processor.push_back(processorTime() - processor);
        times.clock.push_back(clockTime() - clock);
    }
    printAndKeep(name, times);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const bench::Arguments arguments = bench::parse(argc, argv);
    pattern = arguments.pattern;
    QApplication application(argc, argv);
    editor::PictureScrollView scroll;
    scroll.resize(1600, 1200);
    CIFImageEditorView& view = scroll.pictureView();
    view.setPicture(drawing::Picture::fromBitmap(bench::testPicture(12)));
    view.updateSize();
    scroll.show();
    view.setScaleFactor(0.02f);
    const auto settle = [&] {
        do
            QApplication::processEvents();
        while (!view.showsFinalPixels());
        QApplication::processEvents();
    };
    settle();

    std::printf("window %d x %d, %g device pixels to a point; milliseconds\n", scroll.width(),
                scroll.height(), view.devicePixelRatioF());
    std::printf("%-34s %29s %29s\n", "", "processor: median, 95 %, worst",
                "clock: median, 95 %, worst");
    for (const float scale : {0.2f, 0.3f, 0.6f, 1.0f, 1.4f, 3.0f, 20.0f}) {
        view.setScaleFactor(scale);
        settle();
        char name[64];
        std::snprintf(name, sizeof name, "repaint whole at %g", double(scale));
        measure(name, 60, [&](int) { view.update(); });
        if (scroll.horizontalScrollBar()->maximum() == 0)
            continue;
        std::snprintf(name, sizeof name, "pan 200 steps at %g", double(scale));
        measure(name, 200, [&](int i) {
            // Forth and back again before an end is reached.
            const int sign = i % 40 < 20 ? 1 : -1;
            scroll.setScrollPosition(scroll.scrollPosition() + QPoint(17, 11) * sign);
        });
    }
    measure("zoom 0.02 to 80", 200,
            [&](int i) { view.setScaleFactor(0.02f * std::pow(80 / 0.02f, float(i) / 199)); });
    view.setSelection({1000, 700, 1500, 1200});
    for (const float scale : {0.3f, 1.0f}) {
        view.setScaleFactor(scale);
        char name[64];
        std::snprintf(name, sizeof name, "drag the selection at %g", double(scale));
        measure(name, 200, [&](int i) { view.setSelection({1000.0 + i, 700, 1500, 1200}); });
        std::snprintf(name, sizeof name, "repaint whole, selected, at %g", double(scale));
        measure(name, 60, [&](int) { view.update(); });
    }
    // A new picture of the same size, as while a parameter is dragged.
    const auto bitmap = bench::testPicture(12);
    view.setScaleFactor(0.3f);
    measure("show another picture at 0.3", 20, [&](int) {
        view.setPicture(drawing::Picture::fromBitmap(bitmap));
        settle();
    });
    if (!arguments.jsonFile.empty())
        bench::report(rows, arguments.jsonFile);
    return 0;
}
