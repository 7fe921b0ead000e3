// Applies effects on a thread of its own, so that the window never waits: first what is looked at,
// at the resolution it is shown in, then the whole picture.
//
// It is the only place in the editor that draws random numbers: a generator is seeded immediately
// before it runs.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/imaging/Bitmap.h"

#include <QObject>

#include <cstdint>
#include <memory>
#include <string>

namespace editor {

// One application of an entry.
struct Effect {
    std::string identifier;
    foundation::Dictionary attributes; // as the plug-in object is handed them
    foundation::PictureRef picture;    // a generator takes its size
    std::uint32_t seed = 0;            // of a generator

    friend bool operator==(const Effect&, const Effect&) = default;
};

// What is looked at.
struct Sight {
    foundation::Rect visible; // in picture points, y up
    double density = 0;       // device pixels per picture point
};

class EffectRunner final : public QObject {
    Q_OBJECT

public:
    explicit EffectRunner(QObject* parent = nullptr);
    // Stops, and waits for the thread.
    ~EffectRunner() override;

    // The newest effect wins: what is running for an older one is given up, except that its part in
    // sight is still shown. The effect whose result is there, or being made, is not run again.
    void run(const Effect& effect);
    // The part in sight of a result that is still being made comes first.
    void setSight(const Sight& sight);
    // Gives up what is running or waiting; the last result stays what it was.
    void stop();
    // The same, and forgets the last result too.
    void reset();

    // A result is being made or waited for.
    bool isBusy() const;
    // Waits for the result and delivers it; false when the time (in milliseconds; −1 is any) is up.
    bool waitForResult(int milliseconds = -1);

    // Of the effects run so far, for tests and measurements.
    struct Counters {
        int parts = 0;   // parts in sight that were shown
        int results = 0; // whole results
    };
    Counters counters() const;

Q_SIGNALS:
    // On the thread of this object. A part of the coming result, perhaps coarser than it; the
    // rectangle is in picture points.
    void partDidArrive(const imaging::BitmapRef& pixels, const foundation::Rect& rect);
    // A whole result, its pixels made; null when the effect gives none.
    void resultDidArrive(const editor::Effect& effect, const foundation::PictureRef& result);
    void busyDidChange(bool busy);
    // 0 to 1; −1 while it cannot be told.
    void progressDidChange(double fraction);

private:
    struct Worker;
    class LiveWorkers;
    std::shared_ptr<Worker> _worker;
};

} // namespace editor
