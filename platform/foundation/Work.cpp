#include "platform/foundation/Work.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace foundation {

class Work {
public:
    Work(std::stop_token stop, std::function<void(double)> progress, Work* outer)
        : _stop(std::move(stop)), _progress(std::move(progress)), _outer(outer)
    {
    }

    Work* outer() const { return _outer; }
    const std::stop_token& stop() const { return _stop; }
    bool isOfThisThread() const { return _thread == std::this_thread::get_id(); }

    bool stopRequested() const
    {
        for (const Work* work = this; work; work = work->_outer)
            if (work->_stop.stop_requested())
                return true;
        return false;
    }

    bool hears() const { return static_cast<bool>(_progress); }

    void report(double fraction)
    {
        constexpr double kLeastStep = 1e-3;
        const double whole = from + std::min(fraction, 1.0) * (to - from);
        // Not-a-number is not above anything.
        if (!(whole > _reported && (whole >= _reported + kLeastStep || whole == 1)))
            return;
        _reported = whole;
        _progress(whole);
    }

    double from = 0, to = 1; // the section that reports count in

private:
    std::stop_token _stop;
    std::function<void(double)> _progress;
    Work* _outer;
    std::thread::id _thread = std::this_thread::get_id();
    double _reported = 0;
};

namespace {

constinit thread_local Work* current = nullptr;

// The innermost work with a function for progress, unless that is another thread's.
Work* heardWork()
{
    Work* work = current;
    while (work && !work->hears())
        work = work->outer();
    return work && work->isOfThisThread() ? work : nullptr;
}

} // namespace

WorkScope::WorkScope(std::stop_token stop, std::function<void(double)> progress)
    : _work(new Work(std::move(stop), std::move(progress), current))
{
    current = _work;
}

WorkScope::~WorkScope()
{
    current = _work->outer();
    delete _work;
}

bool stopRequested()
{
    return current && current->stopRequested();
}

std::stop_token stopToken()
{
    const Work* work = current;
    while (work && !work->stop().stop_possible())
        work = work->outer();
    return work ? work->stop() : std::stop_token();
}

void checkpoint()
{
    if (stopRequested())
        throw Stopped{};
}

void reportProgress(double fraction)
{
    if (Work* work = heardWork())
        work->report(fraction);
}

ProgressPart::ProgressPart(double from, double to) : _work(heardWork())
{
    if (!_work)
        return;
    _from = _work->from;
    _to = _work->to;
    _work->from = _from + from * (_to - _from);
    _work->to = _from + to * (_to - _from);
}

ProgressPart::~ProgressPart()
{
    if (_work) {
        _work->from = _from;
        _work->to = _to;
    }
}

Work* currentWork()
{
    return current;
}

WorkShare::WorkShare(Work* work) : _before(std::exchange(current, work)) {}

WorkShare::~WorkShare()
{
    current = _before;
}

} // namespace foundation
