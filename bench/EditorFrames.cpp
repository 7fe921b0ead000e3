// What a person sees while dragging each slider of each entry over a 12-megapixel picture: how soon
// the part in sight follows, how long the whole result takes, and how alike the two are.
//   bench-editor-frames [--csv] [--steps N] [--pictures FOLDER] [--sight fitted|own|dense]…
//   [PATTERN]
// The pictures are the preview and the whole result side by side, fitted. Needs no display.
#include "editor/EffectRunner.h"
#include "generators/GLIFCoreObject.h"
#include "platform/drawing/Picture.h"
#include "platform/drawing/Scaling.h"
#include "platform/imaging/Parallel.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"

#include <QCoreApplication>
#include <QImage>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace {

using drawing::Picture;
using editor::Effect;
using editor::EffectRunner;
using editor::Sight;
using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Rect;
using foundation::Value;
using imaging::Bitmap;
using imaging::BitmapRef;
using plugin::Entry;
using plugin::Parameter;

constexpr int kWidth = 4000, kHeight = 3000;
constexpr double kViewportWidth = 1100, kViewportHeight = 800;
// No slider is dragged for longer, slow entries for fewer values.
constexpr double kLongestDrag = 12'000, kFewestValues = 4;

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Of the process; unlike the clock's, it does not grow when others use the machine too.
double processorTime()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6;
}

// Smooth noise, 0 to 1.
float noise(float x, float y)
{
    const auto corner = [](int i, int j) {
        auto h = static_cast<std::uint32_t>(i) * 0x9e3779b1u ^
                 static_cast<std::uint32_t>(j) * 0x85ebca77u;
        h = (h ^ (h >> 15)) * 0x2c1b3c6du;
        return static_cast<float>((h ^ (h >> 12)) & 0xffff) / 65535.0f;
    };
    const float fx = std::floor(x), fy = std::floor(y);
    const auto eased = [](float t) { return t * t * (3 - 2 * t); };
    const float u = eased(x - fx), v = eased(y - fy);
    const int i = static_cast<int>(fx), j = static_cast<int>(fy);
    const float low = std::lerp(corner(i, j), corner(i + 1, j), u);
    const float high = std::lerp(corner(i, j + 1), corner(i + 1, j + 1), u);
    return std::lerp(low, high, v);
}

float clouds(float x, float y, int octaves)
{
    float sum = 0, weight = 0.5f;
    for (int i = 0; i < octaves; ++i, x *= 2, y *= 2, weight *= 0.5f)
        sum += weight * noise(x + 31.0f * static_cast<float>(i), y);
    return sum;
}

// Sky, hills, a ball, a fence and a little grain.
PictureRef photoLikePicture()
{
    const auto bitmap = Bitmap::make(kWidth, kHeight, imaging::PixelFormat::Rgba8);
    if (!bitmap)
        return nullptr;
    imaging::parallelRows(0, kHeight, 16, [&](int first, int last) {
        for (int y = first; y < last; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const float u = float(x) / kHeight, v = float(y) / kHeight;
                const float horizon = 0.45f + 0.2f * clouds(u * 4, 7, 6);
                float rgb[3];
                if (v < horizon) {
                    const float cloud = std::clamp(2 * clouds(u * 5, v * 9, 7) - 0.7f, 0.0f, 1.0f);
                    const float sky[] = {0.35f + 0.4f * v, 0.55f + 0.35f * v, 0.9f};
                    for (int c = 0; c < 3; ++c)
                        rgb[c] = std::lerp(sky[c], 0.97f, cloud);
                } else {
                    const float ground = clouds(u * 40, v * 60, 6);
                    rgb[0] = 0.15f + 0.5f * ground * v;
                    rgb[1] = 0.25f + 0.45f * ground;
                    rgb[2] = 0.1f + 0.2f * ground;
                }
                const float away = std::hypot(u - 0.9f, v - 0.6f);
                if (away < 0.16f) {
                    const float lit =
                        0.3f +
                        0.7f * std::clamp(1 - 4 * std::hypot(u - 0.85f, v - 0.53f), 0.0f, 1.0f);
                    rgb[0] = 0.95f * lit;
                    rgb[1] = 0.3f * lit;
                    rgb[2] = 0.2f * lit;
                }
                if (v > 0.72f && v < 0.93f && x % 110 < 46)
                    for (float& c : rgb)
                        c = 0.75f + 0.2f * noise(float(x) * 0.3f, float(y) * 0.02f);
                const float grain = 0.02f * (noise(float(x) * 0.93f, float(y) * 0.89f) - 0.5f);
                auto* out = bitmap->rowAs<std::uint8_t>(y) + std::ptrdiff_t{4} * x;
                for (int c = 0; c < 3; ++c)
                    out[c] = static_cast<std::uint8_t>(
                        std::clamp(rgb[c] + grain, 0.0f, 1.0f) * 255 + 0.5f);
                out[3] = 255;
            }
    });
    return Picture::fromBitmap(bitmap);
}

struct NamedSight {
    const char* name;
    Sight sight;
};

std::vector<NamedSight> sights()
{
    const double fit = 0.8 * std::min(kViewportWidth / kWidth, kViewportHeight / kHeight);
    return {{"fitted", {{0, 0, kWidth, kHeight}, fit}},
            {"own", {{1450, 1100, kViewportWidth, kViewportHeight}, 1}},
            {"dense", {{0, 0, kWidth, kHeight}, 2 * fit}}};
}

// Peak signal over noise in decibels, of premultiplied colours and alpha; 99 for the same pixels.
double likeness(const Bitmap& a, const Bitmap& b)
{
    if (a.width() != b.width() || a.height() != b.height())
        return 0;
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto *p = a.rowAs<std::uint8_t>(y), *q = b.rowAs<std::uint8_t>(y);
        for (int x = 0; x < a.width(); ++x, p += 4, q += 4) {
            for (int c = 0; c < 3; ++c) {
                const double d = (p[c] * p[3] - q[c] * q[3]) / 255.0;
                sum += d * d;
            }
            sum += (p[3] - q[3]) * (p[3] - q[3]);
        }
    }
    const double mean = sum / (4.0 * a.width() * a.height());
    return mean > 0 ? std::min(99.0, 10 * std::log10(255 * 255 / mean)) : 99;
}

QImage imageOf(const Bitmap& bitmap)
{
    return QImage(reinterpret_cast<const uchar*>(bitmap.row(0)), bitmap.width(), bitmap.height(),
                  static_cast<int>(bitmap.bytesPerRow()), QImage::Format_RGBA8888)
        .copy();
}

struct Options {
    bool csv = false;
    int steps = 30;
    QString pictures;
    std::vector<std::string> sights;
    std::string pattern;
};

Options parse(int argc, char** argv)
{
    Options o;
    for (int i = 1; i < argc; ++i) {
        const bool more = i + 1 < argc;
        if (!std::strcmp(argv[i], "--csv"))
            o.csv = true;
        else if (!std::strcmp(argv[i], "--steps") && more)
            o.steps = std::max(2, std::atoi(argv[++i]));
        else if (!std::strcmp(argv[i], "--pictures") && more)
            o.pictures = argv[++i];
        else if (!std::strcmp(argv[i], "--sight") && more)
            o.sights.emplace_back(argv[++i]);
        else
            o.pattern = argv[i];
    }
    return o;
}

struct Row {
    std::string entry, slider, sight;
    char frame = '-'; // p a part, r the whole result
    double median = 0, nearlyWorst = 0;
    double processor = 0;           // of a frame, all threads added up; median
    double result = 0;              // milliseconds to the whole result
    std::optional<double> likeness; // of the preview and the result made smaller
    std::optional<double> record = {}, replay = {};
};

class Bench {
public:
    explicit Bench(Options options) : _options(std::move(options)), _picture(photoLikePicture())
    {
        QObject::connect(&_runner, &EffectRunner::partDidArrive, &_runner,
                         [this](const BitmapRef& pixels, const Rect& rect) {
                             _part = pixels;
                             _partRect = rect;
                             ++_arrived;
                             _last = 'p';
                         });
        QObject::connect(&_runner, &EffectRunner::resultDidArrive, &_runner,
                         [this](const Effect&, const PictureRef& picture) {
                             _result = picture;
                             ++_arrived;
                             _last = 'r';
                         });
        if (_options.csv)
            std::printf("entry,slider,sight,frame,median_ms,p95_ms,processor_ms,result_ms,likeness_"
                        "db,record_ms,"
                        "replay_ms\n");
        else
            std::printf("%-28s %-22s %-7s %5s %8s %8s %9s %9s %6s %8s %8s\n", "entry", "slider",
                        "sight", "frame", "median", "95 %", "processor", "result", "dB", "record",
                        "replay");
    }

    void measureEntry(const std::string& identifier)
    {
        const auto entry = plugin::describeEntry(_main, identifier);
        if (!entry)
            return;
        const auto values = plugin::startingValues(_main, *entry, _picture->size());
        if (!values) {
            std::fprintf(stderr, "%s: %s\n", identifier.c_str(), values.error().c_str());
            return;
        }
        bool any = false;
        for (const Parameter& p : entry->parameters) {
            const plugin::Range range = entry->isGenerator ? p.valid : p.slider;
            const bool isNumber = p.kind == plugin::ValueKind::Integer ||
                                  p.kind == plugin::ValueKind::Float ||
                                  p.kind == plugin::ValueKind::Double;
            if (!isNumber || !range.minimum || !range.maximum || p.startingValue.isNothing() ||
                (!entry->isGenerator && p.row == 0) || p.key.starts_with("GLIFColor") ||
                p.key == "GLIFShapesType" || p.key == "GLIFIdFigure" || p.key == "GLIFTypeCaps" ||
                p.key == "GLIFType" || p.key == "GLIFRandomSeed" || p.key == "GLIFSchemeKeyColor")
                continue;
            any = true;
            drag(*entry, *values, &p, range);
        }
        if (!any)
            drag(*entry, *values, nullptr, {});
    }

private:
    void waitForNext(int before)
    {
        while (_arrived == before)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }

    Effect effectWith(const Entry& entry, const Dictionary& values, const Parameter* slider,
                      const Value& value, int step)
    {
        Effect e{entry.identifier, values, _picture, 1};
        if (slider)
            e.attributes.set(slider->handedKey, value);
        else
            e.attributes.set("GLIFRandomSeed", step); // for something new to run
        return e;
    }

    static Value valueAt(const Parameter* slider, const plugin::Range& range, double t)
    {
        if (!slider)
            return {};
        const double v = std::lerp(*range.minimum, *range.maximum, t);
        if (slider->kind == plugin::ValueKind::Integer)
            return Value(static_cast<int>(std::lround(v)));
        return Value(static_cast<float>(v));
    }

    void drag(const Entry& entry, const Dictionary& values, const Parameter* slider,
              const plugin::Range& range)
    {
        for (const NamedSight& s : sights()) {
            if (!_options.sights.empty() &&
                std::find(_options.sights.begin(), _options.sights.end(), s.name) ==
                    _options.sights.end())
                continue;
            Row row;
            row.entry = entry.identifier;
            row.slider = slider ? slider->key : "";
            row.sight = s.name;
            _runner.reset();
            _runner.setSight(s.sight);
            // What is made once for the picture and the sight does not count.
            int before = _arrived;
            _runner.run(effectWith(entry, values, slider, valueAt(slider, range, 0.37), -1));
            waitForNext(before);

            std::vector<double> times, processorTimes;
            const Clock::time_point began = Clock::now();
            for (int i = 0; i < _options.steps; ++i) {
                const Clock::time_point start = Clock::now();
                const double processor = processorTime();
                before = _arrived;
                _runner.run(effectWith(entry, values, slider,
                                       valueAt(slider, range, double(i) / (_options.steps - 1)),
                                       i));
                if (_runner.isBusy())
                    waitForNext(before);
                times.push_back(millisecondsSince(start));
                processorTimes.push_back(processorTime() - processor);
                if (millisecondsSince(began) > kLongestDrag && times.size() >= kFewestValues)
                    break;
            }
            row.frame = _last;
            std::sort(times.begin(), times.end());
            row.median = times[times.size() / 2];
            row.nearlyWorst = times[times.size() * 95 / 100];
            std::sort(processorTimes.begin(), processorTimes.end());
            row.processor = processorTimes[processorTimes.size() / 2];

            // What the hand rests at.
            const Value rest = slider && slider->startingValue.number() && !entry.isGenerator
                                   ? slider->startingValue
                                   : valueAt(slider, range, 0.61);
            _part = nullptr;
            _result = nullptr;
            _runner.reset();
            const Clock::time_point start = Clock::now();
            const Effect last = effectWith(entry, values, slider, rest, 1000);
            _runner.run(last);
            _runner.waitForResult();
            row.result = millisecondsSince(start);
            if (_part && _result && _partRect == Rect{0, 0, kWidth, kHeight})
                compare(row);
            if (entry.isGenerator)
                split(row, last);
            print(row);
        }
    }

    void compare(Row& row)
    {
        BitmapRef smaller =
            drawing::scaledBitmap(*_result->bitmap(), _part->width(), _part->height());
        if (!smaller || smaller->format() != _part->format())
            return;
        row.likeness = likeness(*_part, *smaller);
        if (_options.pictures.isEmpty() || row.sight == "own")
            return;
        const QImage preview = imageOf(*_part), whole = imageOf(*smaller);
        QImage sheet(preview.width() * 2 + 8, preview.height(), QImage::Format_RGBA8888);
        sheet.fill(Qt::magenta);
        for (int y = 0; y < preview.height(); ++y) {
            std::memcpy(sheet.scanLine(y), preview.constScanLine(y),
                        std::size_t(preview.width()) * 4);
            std::memcpy(sheet.scanLine(y) + (preview.width() + 8) * 4, whole.constScanLine(y),
                        std::size_t(whole.width()) * 4);
        }
        char name[160];
        std::snprintf(name, sizeof name, "/%05.1f-%s-%s.png", *row.likeness, row.entry.c_str(),
                      row.slider.c_str());
        sheet.save(_options.pictures + name);
    }

    void split(Row& row, const Effect& effect)
    {
        // Not the object that has just made it, which may have kept what it computed.
        CIFMain fresh;
        std::srand(effect.seed);
        const Clock::time_point start = Clock::now();
        const PictureRef picture = fresh.CIFGenerateLayerAttributesForImage(
            effect.identifier, effect.attributes, effect.picture);
        row.record = millisecondsSince(start);
        const Clock::time_point replay = Clock::now();
        if (picture && picture->bitmap())
            row.replay = millisecondsSince(replay);
    }

    void print(const Row& r) const
    {
        const auto number = [](const std::optional<double>& v) {
            char text[32] = "";
            if (v)
                std::snprintf(text, sizeof text, "%.1f", *v);
            return std::string(text);
        };
        std::printf(_options.csv ? "%s,%s,%s,%c,%s,%s,%s,%s,%s,%s,%s\n"
                                 : "%-28s %-22s %-7s %5c %8s %8s %9s %9s %6s %8s %8s\n",
                    r.entry.c_str(), r.slider.c_str(), r.sight.c_str(), r.frame,
                    number(r.median).c_str(), number(r.nearlyWorst).c_str(),
                    number(r.processor).c_str(), number(r.result).c_str(),
                    number(r.likeness).c_str(), number(r.record).c_str(), number(r.replay).c_str());
        std::fflush(stdout);
    }

    Options _options;
    PictureRef _picture;
    CIFMain _main;
    EffectRunner _runner;
    int _arrived = 0;
    char _last = '-';
    BitmapRef _part;
    Rect _partRect;
    PictureRef _result;
};

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication application(argc, argv);
    const Options options = parse(argc, argv);
    Bench bench(options);
    CIFMain main;
    for (const std::uint32_t set : {0u, 1u}) {
        main.CIFSetEffectsSet(set);
        for (const std::string& listed : main.CIFAllFilterIdentifiers()) {
            std::vector<std::string> entries;
            if (const auto group = main.CIFFiltersDescriptorForGroup(listed)) {
                for (const Value& member : *group)
                    entries.push_back(member.dictionary()->stringValue("CIFFilterIdentifier"));
            } else if (main.CIFDescriptorForFilterName(listed)) {
                entries.push_back(listed);
            }
            for (const std::string& entry : entries)
                if (entry.find(options.pattern) != std::string::npos)
                    bench.measureEntry(entry);
        }
    }
    return 0;
}
