// The window's thread posts effects and hands out what arrives; the effect thread does the rest.
#include "editor/EffectRunner.h"

#include "editor/PreviewAttributes.h"
#include "generators/GLIFCoreObject.h"
#include "platform/drawing/Picture.h"
#include "platform/drawing/Scaling.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Work.h"
#include "platform/imaging/Reduction.h"
#include "platform/imaging/Renderer.h"
#include "plugin/CIFMain.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace editor {

using drawing::Picture;
using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Rect;
using foundation::Size;
using foundation::truncToInt;
using imaging::Bitmap;
using imaging::BitmapRef;
using imaging::PixelFormat;
using imaging::PixelRect;
using plugin::FilterOutput;

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// A whole result is begun when nothing newer has come for so long: while values follow each other
// closely, the hand is taken to be moving still.
constexpr auto kRest = 4ms, kRestOfMovingHand = 30ms, kMovingHand = 100ms;
// So long may something for an older effect go on when it will be shown.
constexpr auto kPatience = 250ms;
// Whole results that take no longer need no part before them.
constexpr auto kQuick = 12ms;
// What making a part may take, as far as there is a choice.
constexpr auto kFrame = 20ms;
// Pixels around the part in sight that are made with it, so that small movements find them there.
constexpr int kMargin = 32;
// From this density on, a part has the picture's own pixels: a smaller copy would save little.
constexpr double kOwnPixelsFrom = 0.75;

bool isGenerator(const Effect& effect)
{
    return effect.identifier.starts_with("GLIF_");
}

Rect whole(const Picture& picture)
{
    return {0, 0, picture.size().width, picture.size().height};
}

Rect common(const Rect& a, const Rect& b)
{
    const double left = std::max(a.x, b.x), bottom = std::max(a.y, b.y);
    const double right = std::min(a.right(), b.right()), top = std::min(a.top(), b.top());
    return right > left && top > bottom ? Rect::fromEdges(left, bottom, right, top) : Rect();
}

Rect both(const Rect& a, const Rect& b)
{
    return a.isEmpty()
               ? b
               : Rect::fromEdges(std::min(a.x, b.x), std::min(a.y, b.y),
                                 std::max(a.right(), b.right()), std::max(a.top(), b.top()));
}

// But for what is lost between points and the pixels of a copy: a part that is a rounding short of
// what is in sight would be asked for again without end.
bool contains(const Rect& a, const Rect& b)
{
    constexpr double kRounding = 1e-6;
    return a.x <= b.x + kRounding && a.y <= b.y + kRounding && a.right() >= b.right() - kRounding &&
           a.top() >= b.top() - kRounding;
}

// Of a part with the result's own pixels.
constexpr double kAnyDensity = std::numeric_limits<double>::infinity();

// Pixels of a picture and the points they cover.
struct Part {
    BitmapRef pixels;
    Rect rect;
    double density = 0;

    explicit operator bool() const { return pixels != nullptr; }
};

// A picture of that size as it is at that density.
struct Shrunk {
    int width, height;
    CopyScale scale;
};
Shrunk shrunk(Size size, double density)
{
    const auto side = [&](double points) {
        return std::max(1, static_cast<int>(std::lround(points * density)));
    };
    const int width = side(size.width), height = side(size.height);
    return {width, height, {width / size.width, height / size.height}};
}

// Whole pixels around the rectangle of points, with the margin, inside width × height pixels.
PixelRect pixelsAround(const Rect& points, CopyScale scale, int width, int height)
{
    const auto low = [](double v) { return static_cast<int>(std::floor(v)) - kMargin; };
    const auto high = [](double v) { return static_cast<int>(std::ceil(v)) + kMargin; };
    const int left = std::max(0, low(points.x * scale.x));
    const int bottom = std::max(0, low(points.y * scale.y));
    const int right = std::min(width, high(points.right() * scale.x));
    const int top = std::min(height, high(points.top() * scale.y));
    return {left, bottom, right - left, top - bottom};
}

Rect pointsOf(const PixelRect& pixels, CopyScale scale)
{
    return {pixels.x / scale.x, pixels.y / scale.y, pixels.width / scale.x,
            pixels.height / scale.y};
}

// What the effect thread applies effects with. Its two plug-in objects keep their sources between
// calls, one of them the picture, the other the copy of it that is as small as it is shown.
class Studio {
public:
    FilterOutput output(const Effect& effect)
    {
        return _whole.outputOfFilter(effect.identifier, effect.attributes, effect.picture);
    }

    PictureRef generated(const Effect& effect)
    {
        std::srand(effect.seed);
        return _whole.CIFGenerateLayerAttributesForImage(effect.identifier, effect.attributes,
                                                         effect.picture);
    }

    // Nothing when what is in sight cannot be shown before the whole.
    Part part(const Effect& effect, const FilterOutput& output, const Sight& sight)
    {
        if (sight.density >= kOwnPixelsFrom)
            return partOf(output, sight.visible, {}, kAnyDensity);
        const auto [width, height, scale] = shrunk(effect.picture->size(), sight.density);
        const PixelRect rect = pixelsAround(sight.visible, scale, width, height);
        Part part{nullptr, pointsOf(rect, scale), sight.density};
        const PreviewWay way = previewWay(effect.identifier);
        if (way == PreviewWay::SomeRows) {
            part.pixels = someRows(effect, output, rect, scale);
            return part;
        }
        // Shown larger, a pattern's cells have pixels enough. Whole numbers, for equal pixels.
        constexpr double kFine = 0.3;
        const int finer = way == PreviewWay::FineCopy && sight.density < kFine ? 2 : 1;
        const int copyWidth = width * finer, copyHeight = height * finer;
        const FilterOutput ofCopy = outputOfCopy(effect, copyWidth, copyHeight);
        // A filter that takes no picture may answer another size.
        if (ofCopy.width != copyWidth || ofCopy.height != copyHeight)
            return {};
        part.pixels =
            finer > 1 ? imaging::renderReduced(ofCopy.image, rect, 1.0 / finer, 1.0 / finer, finer)
                      : faded(imaging::render(ofCopy.image, rect, PixelFormat::Rgba8),
                              previewOpacity(effect.identifier, scale));
        return part;
    }

    // The pixels in sight of a generator's picture, where one can be had without the others.
    Part sampled(const Effect& effect, const Sight& sight)
    {
        const Size size = effect.picture->size();
        const generators::PixelSize whole{truncToInt(size.width), truncToInt(size.height)};
        if (size != Size{double(whole.width), double(whole.height)})
            return {};
        const double density = std::min(sight.density, 1.0);
        const auto [width, height, scale] = shrunk(size, density);
        const PixelRect rect = pixelsAround(sight.visible, scale, width, height);
        generators::Sampling sampling{whole, {}, {}};
        for (int x = 0; x < rect.width; ++x)
            sampling.columns.push_back(truncToInt((rect.x + x + 0.5) / scale.x));
        for (int y = rect.height - 1; y >= 0; --y)
            sampling.rows.push_back(whole.height - 1 - truncToInt((rect.y + y + 0.5) / scale.y));
        std::srand(effect.seed);
        const auto generator = _whole.GLIFSmartInstanceFromName(effect.identifier);
        const PictureRef picture =
            generator ? generator->sampledPicture(sampling, effect.attributes) : nullptr;
        return {picture ? picture->bitmap() : nullptr, pointsOf(rect, scale),
                density < 1 ? density : kAnyDensity};
    }

    // Of a recorded drawing.
    static Part partOfDrawing(const Picture& picture, const Sight& sight)
    {
        const double density = std::min(sight.density, 1.0);
        const auto [width, height, scale] = shrunk(picture.size(), density);
        const PixelRect pixels = pixelsAround(sight.visible, scale, width, height);
        const Rect rect = pointsOf(pixels, scale);
        return {picture.part(rect, pixels.width, pixels.height), rect,
                density < 1 ? density : kAnyDensity};
    }

private:
    static Part partOf(const FilterOutput& output, const Rect& visible, CopyScale scale,
                       double density)
    {
        const PixelRect rect = pixelsAround(visible, scale, output.width, output.height);
        return {imaging::render(output.image, rect, PixelFormat::Rgba8), pointsOf(rect, scale),
                density};
    }

    // As many rows of the whole as a frame leaves time for.
    BitmapRef someRows(const Effect& effect, const FilterOutput& output, const PixelRect& rect,
                       CopyScale scale)
    {
        if (std::exchange(_rowsOf, effect.identifier) != effect.identifier)
            _rowsEach = 1;
        const double most = std::ceil(1 / scale.y);
        const double each = std::clamp(_rowsEach, 1.0, most);
        const Clock::time_point began = Clock::now();
        const BitmapRef pixels =
            imaging::renderReduced(output.image, rect, scale.x, scale.y, static_cast<int>(each));
        const double frames = (Clock::now() - began) / std::chrono::duration<double>(kFrame);
        // Slowly, as others use the machine too.
        _rowsEach = std::clamp(each * std::clamp(1 / frames, 0.5, 1.5), 1.0, most);
        return pixels;
    }

    static BitmapRef faded(const std::shared_ptr<Bitmap>& pixels, double opacity)
    {
        if (pixels && opacity < 1)
            for (int y = 0; y < pixels->height(); ++y) {
                auto* row = pixels->rowAs<std::uint8_t>(y);
                for (int x = 0; x < pixels->width(); ++x)
                    row[4 * x + 3] = static_cast<std::uint8_t>(row[4 * x + 3] * opacity + 0.5);
            }
        return pixels;
    }

    FilterOutput outputOfCopy(const Effect& effect, int width, int height)
    {
        const PictureRef copy = copyOf(effect.picture, width, height);
        if (!copy)
            return {};
        if (_described != effect.identifier) {
            _described = effect.identifier;
            _description = _small.CIFQueryAttributesForFilter(effect.identifier);
        }
        const Size size = effect.picture->size();
        const CopyScale scale{width / size.width, height / size.height};
        return _small.outputOfFilter(
            effect.identifier,
            withScaledPictures(
                previewAttributes(effect.identifier, effect.attributes, _description, scale),
                scale),
            copy);
    }

    // The last two are kept: one as it is shown, one finer.
    PictureRef copyOf(const PictureRef& picture, int width, int height)
    {
        const auto fits = [&](const Copy& c) {
            return c.of == picture && c.picture && c.picture->pixelsWide() == width &&
                   c.picture->pixelsHigh() == height;
        };
        if (!fits(_copies[0])) {
            std::swap(_copies[0], _copies[1]);
            if (!fits(_copies[0])) {
                _copies[0] = {};
                if (_copies[1].of != picture)
                    _copies[1] = {};
                if (const BitmapRef pixels = picture->bitmap())
                    _copies[0] = {picture, Picture::fromBitmap(
                                               drawing::scaledBitmap(*pixels, width, height))};
            }
        }
        return _copies[0].picture;
    }

    Dictionary withScaledPictures(Dictionary attributes, CopyScale scale)
    {
        const Dictionary given = attributes;
        for (const auto& [key, value] : given)
            if (const PictureRef picture = value.picture(); picture && isScaledPicture(key))
                attributes.set(key, scaledTexture(picture, scale));
        return attributes;
    }

    PictureRef scaledTexture(const PictureRef& texture, CopyScale scale)
    {
        if (_textureOf == texture && _textureScale == scale)
            return _texture;
        const BitmapRef pixels = texture->bitmap();
        const auto side = [](int pixels, double by) {
            return std::max(1, static_cast<int>(std::lround(pixels * by)));
        };
        _textureOf = texture;
        _textureScale = scale;
        _texture =
            pixels ? Picture::fromBitmap(drawing::scaledBitmap(
                         *pixels, side(pixels->width(), scale.x), side(pixels->height(), scale.y)))
                   : nullptr;
        return _texture;
    }

    CIFMain _whole, _small;
    struct Copy {
        PictureRef of, picture;
    };
    Copy _copies[2];
    std::string _rowsOf; // the filter
    double _rowsEach = 1;
    PictureRef _textureOf, _texture;
    CopyScale _textureScale;
    std::string _described; // whose description is kept
    foundation::DictionaryRef _description;
};

// What the effect thread has for the window's.
struct Delivery {
    enum class Kind { Part, Result, Progress, LogLine };

    Kind kind;
    std::uint64_t job = 0;
    Effect effect = {};
    Part part = {};
    PictureRef picture = {};
    double progress = 0;
    std::string line = {};
};

} // namespace

struct EffectRunner::Worker {
    using Number = std::uint64_t;

    struct Job {
        Number number = 0;
        Effect effect;
        bool handMoves = false; // the one before came a moment ago
    };
    // What the effect thread is at: nothing that a newer effect would disturb; the source or a
    // part, which are worth waiting for when other values of the same entry follow; what is shown
    // for an older effect too if it does not take long; what only the newest effect needs.
    enum class Phase { Waiting, ForFollowers, ForShow, ForNewest };

    explicit Worker(EffectRunner& owner) : runner(owner) {}

    // Of the window's thread.

    EffectRunner& runner;
    std::optional<Effect> wanted; // its result has not been delivered
    std::optional<Effect> done;   // the one whose result was delivered last
    PictureRef result;
    bool isShown = true; // nothing of another effect was shown since
    bool toldBusy = false;
    double toldProgress = -1;
    Counters counters;
    Clock::time_point lastRun;

    void run(const Effect& effect);
    void setSight(const Sight& newSight);
    void giveUp();
    void end();
    void tellBusy();
    void tellProgress(double fraction);
    void deliver();
    void deliver(const Delivery& delivery);
    void stopOlder();

    // Of both, under the lock.

    std::mutex lock;
    std::condition_variable_any posted; // for the effect thread
    std::condition_variable arrived;    // for a window that waits
    Number lastNumber = 0;
    Number firstValid = 0; // jobs below it were stopped
    std::optional<Job> next;
    std::vector<Effect> passed; // never begun; of the same entry and picture as the next
    Sight sight;
    std::optional<Job> current;
    bool forgets = false;    // the effect thread is to let go of the pictures that it keeps
    bool showsParts = false; // of the current job
    Part shown;              // its last part, without the pixels
    Phase phase = Phase::Waiting;
    Clock::time_point phaseBegan;
    std::stop_source phaseStop;
    std::deque<Delivery> deliveries;
    bool isPosted = false;

    bool isStopped(const Job& job) const { return job.number < firstValid; }
    bool isOlder(const Job& job) const { return next || job.number < firstValid; }
    bool needsPart() const;
    bool stopIfOlder();

    // Of the effect thread.

    std::optional<Studio> studio{std::in_place};
    // How long the last whole result took.
    std::string pacedIdentifier;
    std::weak_ptr<const Picture> pacedPicture;
    Clock::duration pace{};
    bool wasQuick(const Effect& effect) const
    {
        return pacedIdentifier == effect.identifier && pacedPicture.lock() == effect.picture &&
               pace <= kQuick;
    }
    std::set<std::string> drawing; // the generators that answered drawings

    void live(const std::stop_token& end);
    void work(const Job& job);
    void workOnFilter(const Job& job);
    void workOnGenerator(const Job& job);
    void showParts(const Job& job, Phase partPhase, const std::function<Part(const Sight&)>& make);
    // A section of the progress that the window is told of.
    struct Section {
        double from = 0, to = 0;
    };
    bool attempt(const Job& job, Phase newPhase, Section section,
                 const std::function<void()>& work);
    // The same for a whole result, whose pace is kept.
    bool attemptWhole(const Job& job, Phase newPhase, const std::function<void()>& work);
    bool rests(const Job& job);
    std::stop_token begin(Phase newPhase);
    void hand(Delivery delivery);
    void handResult(const Job& job, const PictureRef& picture);

    std::jthread thread; // last: it uses everything above
};

// Of the window's thread.

void EffectRunner::Worker::run(const Effect& effect)
{
    if (wanted && *wanted == effect)
        return;
    if (done && *done == effect) {
        // Back to what is there.
        if (wanted)
            giveUp();
        if (!isShown) {
            isShown = true;
            // A receiver may have the result forgotten.
            const PictureRef again = result;
            Q_EMIT runner.resultDidArrive(effect, again);
        }
        return;
    }
    wanted = effect;
    const Clock::time_point now = Clock::now();
    bool watch = false;
    {
        const std::lock_guard guard(lock);
        const Effect* former = next ? &next->effect : current ? &current->effect : nullptr;
        const bool continues =
            former && former->identifier == effect.identifier && former->picture == effect.picture;
        if (!continues)
            passed.clear();
        else if (next)
            passed.push_back(std::move(next->effect));
        next = Job{++lastNumber, effect, now - lastRun < kMovingHand};
        watch = !stopIfOlder();
    }
    lastRun = now;
    posted.notify_one();
    if (watch && QCoreApplication::instance())
        QTimer::singleShot(kPatience, &runner, [this] { stopOlder(); });
    const QPointer<EffectRunner> alive(&runner);
    tellBusy();
    if (alive)
        tellProgress(-1);
}

void EffectRunner::Worker::tellProgress(double fraction)
{
    if (std::exchange(toldProgress, fraction) != fraction)
        Q_EMIT runner.progressDidChange(fraction);
}

// Whether nothing is left that an older effect is still patiently given time for.
bool EffectRunner::Worker::stopIfOlder()
{
    if (phase == Phase::Waiting || !current || !isOlder(*current))
        return true;
    if (phase != Phase::ForNewest && !isStopped(*current)) {
        if (phase == Phase::ForFollowers && next->effect.identifier == current->effect.identifier &&
            next->effect.picture == current->effect.picture)
            return true;
        if (Clock::now() - phaseBegan < kPatience)
            return false;
    }
    phaseStop.request_stop();
    return true;
}

void EffectRunner::Worker::stopOlder()
{
    const std::lock_guard guard(lock);
    stopIfOlder();
}

void EffectRunner::Worker::setSight(const Sight& newSight)
{
    {
        const std::lock_guard guard(lock);
        if (sight.visible == newSight.visible && sight.density == newSight.density)
            return;
        sight = newSight;
        // The whole is begun anew after the part.
        if (phase == Phase::ForNewest && needsPart())
            phaseStop.request_stop();
    }
    posted.notify_one();
}

void EffectRunner::Worker::giveUp()
{
    wanted.reset();
    {
        const std::lock_guard guard(lock);
        firstValid = lastNumber + 1;
        next.reset();
        passed.clear();
        stopIfOlder();
        std::erase_if(deliveries,
                      [](const Delivery& d) { return d.kind != Delivery::Kind::LogLine; });
    }
    tellBusy();
}

// Of the thread.
void EffectRunner::Worker::end()
{
    {
        const std::lock_guard guard(lock);
        firstValid = std::numeric_limits<Number>::max();
        stopIfOlder();
    }
    thread.request_stop();
    if (thread.joinable())
        thread.join();
}

void EffectRunner::Worker::tellBusy()
{
    const bool busy = wanted.has_value();
    if (std::exchange(toldBusy, busy) != busy)
        Q_EMIT runner.busyDidChange(busy);
}

void EffectRunner::Worker::deliver()
{
    // A receiver may destroy the runner.
    const QPointer<EffectRunner> alive(&runner);
    while (alive) {
        std::unique_lock guard(lock);
        isPosted = false;
        if (deliveries.empty())
            return;
        const Delivery delivery = std::move(deliveries.front());
        deliveries.pop_front();
        guard.unlock();
        deliver(delivery);
    }
}

void EffectRunner::Worker::deliver(const Delivery& delivery)
{
    switch (delivery.kind) {
    case Delivery::Kind::LogLine:
        foundation::log(delivery.line);
        break;
    case Delivery::Kind::Progress:
        tellProgress(delivery.progress);
        break;
    case Delivery::Kind::Part:
        ++counters.parts;
        isShown = false;
        Q_EMIT runner.partDidArrive(delivery.part.pixels, delivery.part.rect);
        break;
    case Delivery::Kind::Result:
        if (!wanted || *wanted != delivery.effect) {
            // Newer values came while this was on its way: only something to look at.
            const PictureRef& picture = delivery.picture;
            const PictureRef& base = delivery.effect.picture;
            if (picture && base && picture->size() == base->size()) {
                ++counters.parts;
                isShown = false;
                Q_EMIT runner.partDidArrive(picture->bitmapIfMade(), whole(*picture));
            }
            break;
        }
        ++counters.results;
        wanted.reset();
        {
            // The same may have been asked for once more, by way of another.
            const std::lock_guard guard(lock);
            firstValid = lastNumber + 1;
            next.reset();
            stopIfOlder();
        }
        done = delivery.effect;
        result = delivery.picture;
        isShown = true;
        const QPointer<EffectRunner> alive(&runner);
        Q_EMIT runner.resultDidArrive(delivery.effect, delivery.picture);
        if (alive)
            tellBusy();
        break;
    }
}

// Under the lock.

// What is in sight of the current job's result has not been handed over.
bool EffectRunner::Worker::needsPart() const
{
    if (!current || !showsParts || isOlder(*current) || !(sight.density > 0))
        return false;
    const Rect visible = common(sight.visible, whole(*current->effect.picture));
    if (visible.isEmpty())
        return false;
    constexpr double kRounding = 1e-6;
    return !(contains(shown.rect, visible) && sight.density <= shown.density * (1 + kRounding));
}

// Of the effect thread.

void EffectRunner::Worker::live(const std::stop_token& end)
{
    foundation::setLogSinkOfThread([this](std::string_view line) {
        hand({.kind = Delivery::Kind::LogLine, .line = std::string(line)});
    });
    std::unique_lock guard(lock);
    while (posted.wait(guard, end, [this] { return next || forgets; })) {
        if (std::exchange(forgets, false)) {
            guard.unlock();
            studio.emplace();
            guard.lock();
            continue;
        }
        current = std::move(next);
        next.reset();
        showsParts = false;
        shown = {};
        const Job job = *current;
        guard.unlock();
        try {
            work(job);
        } catch (const std::exception&) {
            // Memory is short, as good as always.
            handResult(job, nullptr);
        }
        guard.lock();
        phase = Phase::Waiting;
        current.reset();
    }
    guard.unlock();
    foundation::setLogSinkOfThread({});
}

std::stop_token EffectRunner::Worker::begin(Phase newPhase)
{
    const std::lock_guard guard(lock);
    phase = newPhase;
    phaseBegan = Clock::now();
    phaseStop = {};
    if (isStopped(*current) || (phase == Phase::ForNewest && (isOlder(*current) || needsPart())))
        phaseStop.request_stop();
    return phaseStop.get_token();
}

void EffectRunner::Worker::hand(Delivery delivery)
{
    {
        const std::lock_guard guard(lock);
        if (delivery.kind != Delivery::Kind::LogLine && delivery.job < firstValid)
            return;
        if (delivery.kind == Delivery::Kind::Progress && !deliveries.empty() &&
            deliveries.back().kind == Delivery::Kind::Progress)
            deliveries.back() = std::move(delivery);
        else
            deliveries.push_back(std::move(delivery));
        arrived.notify_all();
        if (std::exchange(isPosted, true))
            return;
    }
    QMetaObject::invokeMethod(
        &runner, [this] { deliver(); }, Qt::QueuedConnection);
}

void EffectRunner::Worker::handResult(const Job& job, const PictureRef& picture)
{
    hand({.kind = Delivery::Kind::Result,
          .job = job.number,
          .effect = job.effect,
          .picture = picture});
}

void EffectRunner::Worker::work(const Job& job)
{
    if (isGenerator(job.effect))
        workOnGenerator(job);
    else
        workOnFilter(job);
}

// Does work that can be stopped; false when it was.
bool EffectRunner::Worker::attempt(const Job& job, Phase newPhase, Section section,
                                   const std::function<void()>& work)
{
    const std::stop_token stop = begin(newPhase);
    try {
        std::function<void(double)> report;
        if (section.to > section.from)
            report = [&](double fraction) {
                hand({.kind = Delivery::Kind::Progress,
                      .job = job.number,
                      .progress = std::lerp(section.from, section.to, fraction)});
            };
        const foundation::WorkScope scope(stop, std::move(report));
        foundation::checkpoint();
        work();
        return true;
    } catch (const foundation::Stopped&) {
        return false;
    }
}

bool EffectRunner::Worker::attemptWhole(const Job& job, Phase newPhase,
                                        const std::function<void()>& work)
{
    const Clock::time_point began = Clock::now();
    // Drawings are made into pixels afterwards.
    const double recorded = drawing.contains(job.effect.identifier) ? 0.5 : 1;
    if (!attempt(job, newPhase, {0, recorded}, work))
        return false;
    pacedIdentifier = job.effect.identifier;
    pacedPicture = job.effect.picture;
    pace = Clock::now() - began;
    return true;
}

void EffectRunner::Worker::workOnFilter(const Job& job)
{
    const PictureRef& picture = job.effect.picture;
    std::vector<Effect> before;
    {
        const std::lock_guard guard(lock);
        before = std::move(passed);
        passed.clear();
    }
    FilterOutput output;
    // What the plug-in object answers can depend on what it was asked before. Only the source is
    // computed here.
    const bool isThere = attempt(job, Phase::ForFollowers, {}, [&] {
        for (const Effect& effect : before)
            studio->output(effect);
        output = studio->output(job.effect);
    });
    if (!isThere)
        return;
    if (!output) {
        handResult(job, nullptr);
        return;
    }
    const bool isQuick = wasQuick(job.effect);
    {
        const std::lock_guard guard(lock);
        showsParts =
            !isQuick && picture->size() == Size{double(output.width), double(output.height)};
    }
    BitmapRef pixels;
    const auto render = [&] {
        pixels = imaging::render(output.image, {0, 0, output.width, output.height}, output.format);
    };
    if (isQuick) {
        if (attemptWhole(job, Phase::ForShow, render))
            handResult(job, Picture::fromBitmap(pixels));
        return;
    }
    do {
        showParts(job, Phase::ForFollowers,
                  [&](const Sight& part) { return studio->part(job.effect, output, part); });
        if (!rests(job))
            return;
    } while (!attemptWhole(job, Phase::ForNewest, render));
    handResult(job, Picture::fromBitmap(pixels));
}

void EffectRunner::Worker::workOnGenerator(const Job& job)
{
    PictureRef picture;
    const auto generate = [&] {
        picture = studio->generated(job.effect);
        if (picture && !picture->isVector())
            static_cast<void>(picture->bitmap());
    };
    const bool isQuick = wasQuick(job.effect);
    {
        const std::lock_guard guard(lock);
        showsParts = !isQuick && job.effect.picture && !drawing.contains(job.effect.identifier);
    }
    bool isThere = false, isShownInPart = false;
    do {
        showParts(job, Phase::ForFollowers, [&](const Sight& part) {
            Part made = studio->sampled(job.effect, part);
            isShownInPart = isShownInPart || made;
            return made;
        });
        if (isShownInPart && !rests(job))
            return;
        isThere = attemptWhole(job, isShownInPart ? Phase::ForNewest : Phase::ForShow, generate);
    } while (!isThere && isShownInPart);
    if (!isThere)
        return;
    if (!picture || !picture->isVector()) {
        handResult(job, picture);
        return;
    }
    drawing.insert(job.effect.identifier);
    {
        const std::lock_guard guard(lock);
        showsParts = job.effect.picture && picture->size() == job.effect.picture->size();
        shown = {};
    }
    bool isDrawn = false;
    do {
        showParts(job, Phase::ForShow,
                  [&](const Sight& part) { return Studio::partOfDrawing(*picture, part); });
        if (!rests(job))
            return;
    } while (
        !attempt(job, Phase::ForNewest, {0.5, 1}, [&] { isDrawn = picture->bitmap() != nullptr; }));
    handResult(job, isDrawn ? picture : nullptr);
}

// The part in sight, and once more when something else comes into sight meanwhile.
void EffectRunner::Worker::showParts(const Job& job, Phase partPhase,
                                     const std::function<Part(const Sight&)>& make)
{
    for (;;) {
        Sight part;
        {
            const std::lock_guard guard(lock);
            if (!needsPart())
                return;
            part = {common(sight.visible, whole(*job.effect.picture)), sight.density};
        }
        Part made;
        if (!attempt(job, partPhase, {}, [&] { made = make(part); }))
            return;
        {
            const std::lock_guard guard(lock);
            // Whatever came of it, roundings and all: it is not tried again.
            shown = {nullptr, both(made.rect, part.visible), std::max(made.density, part.density)};
        }
        if (made)
            hand({.kind = Delivery::Kind::Part, .job = job.number, .part = std::move(made)});
    }
}

// False when something newer came.
bool EffectRunner::Worker::rests(const Job& job)
{
    std::unique_lock guard(lock);
    phase = Phase::Waiting;
    posted.wait_for(guard, job.handMoves ? kRestOfMovingHand : kRest,
                    [&] { return isOlder(job) || needsPart(); });
    return !isOlder(job);
}

// Ends the threads of this thread's runners that are still there when it ends. Where the process
// exits, that is before anything goes that they use, whenever it was made.
class EffectRunner::LiveWorkers {
public:
    static LiveWorkers& ofThread()
    {
        static thread_local LiveWorkers all;
        return all;
    }
    void add(const std::shared_ptr<Worker>& worker)
    {
        std::erase_if(_workers, [](const auto& w) { return w.expired(); });
        _workers.push_back(worker);
    }

    ~LiveWorkers()
    {
        for (const auto& worker : _workers)
            if (const auto live = worker.lock())
                live->end();
    }

private:
    std::vector<std::weak_ptr<Worker>> _workers;
};

EffectRunner::EffectRunner(QObject* parent)
    : QObject(parent), _worker(std::make_shared<Worker>(*this))
{
    LiveWorkers::ofThread().add(_worker);
    _worker->thread =
        std::jthread([worker = _worker.get()](const std::stop_token& end) { worker->live(end); });
}

EffectRunner::~EffectRunner()
{
    _worker->wanted.reset();
    _worker->toldBusy = false;
    _worker->giveUp();
    _worker->end();
    for (const Delivery& delivery : _worker->deliveries)
        if (delivery.kind == Delivery::Kind::LogLine)
            foundation::log(delivery.line);
}

void EffectRunner::run(const Effect& effect)
{
    _worker->run(effect);
}

void EffectRunner::setSight(const Sight& sight)
{
    _worker->setSight(sight);
}

void EffectRunner::stop()
{
    _worker->giveUp();
}

void EffectRunner::reset()
{
    _worker->done.reset();
    _worker->result = nullptr;
    _worker->giveUp();
    {
        const std::lock_guard guard(_worker->lock);
        _worker->forgets = true;
    }
    _worker->posted.notify_one();
}

bool EffectRunner::isBusy() const
{
    return _worker->wanted.has_value();
}

bool EffectRunner::waitForResult(int milliseconds)
{
    Worker& worker = *_worker;
    worker.stopOlder();
    const Clock::time_point end =
        Clock::now() + std::chrono::milliseconds(std::max(milliseconds, 0));
    const QPointer<EffectRunner> alive(this);
    const auto something = [&] { return !worker.deliveries.empty(); };
    for (;;) {
        worker.deliver();
        if (!alive || !isBusy())
            return true;
        if (!worker.thread.joinable())
            return false;
        std::unique_lock guard(worker.lock);
        if (milliseconds < 0)
            worker.arrived.wait(guard, something);
        else if (!worker.arrived.wait_until(guard, end, something))
            return false;
    }
}

EffectRunner::Counters EffectRunner::counters() const
{
    return _worker->counters;
}

} // namespace editor
