// Work that whoever asked for it can stop and watch.
//
// The caller opens a scope around what it calls; long loops below look up now and then whether to
// go on. Without a scope on the thread none of this does anything.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <stop_token>

namespace foundation {

// Thrown where work finds that it is to stop. It passes through everything up to the scope: nothing
// was made or kept, and the objects that took part are ready for the next call. It is no
// std::exception, so that nobody takes it for a failure.
struct Stopped {};

class Work;

// While it lives, the thread's work can be stopped by the token and reports to the function: a
// fraction from 0 to 1 that never falls, on this thread, at most a thousand times. Scopes nest; a
// stop of an outer one stops the inner work too, and an inner one without a function reports to the
// outer one's.
class WorkScope {
public:
    explicit WorkScope(std::stop_token stop, std::function<void(double)> progress = {});
    ~WorkScope();
    WorkScope(const WorkScope&) = delete;
    WorkScope& operator=(const WorkScope&) = delete;

private:
    Work* _work;
};

// Whether a stop of the thread's work was requested.
bool stopRequested();

// The token of the innermost scope that has one, for work that is handed a token; else an empty
// one.
std::stop_token stopToken();

// Throws Stopped when it was. Costs a few nanoseconds; once for some ten microseconds of work is
// often enough. What is thrown passes through parallel loops.
void checkpoint();

// How much of the work is done, 0 to 1. Of threads that help with a parallel loop nothing is heard.
void reportProgress(double fraction);

// A section of the work: while it lives, reports from 0 to 1 count as `from` to `to`.
class ProgressPart {
public:
    ProgressPart(double from, double to);
    ~ProgressPart();
    ProgressPart(const ProgressPart&) = delete;
    ProgressPart& operator=(const ProgressPart&) = delete;

private:
    Work* _work;
    double _from = 0, _to = 1; // of the section around this one
};

// Counts the steps of a loop, from all threads that work on it, and reports.
class ProgressSteps {
public:
    explicit ProgressSteps(std::int64_t total) : _total(total) {}

    void add(std::int64_t steps)
    {
        const std::int64_t done = _done.fetch_add(steps, std::memory_order_relaxed) + steps;
        reportProgress(static_cast<double>(done) / static_cast<double>(_total));
    }

private:
    std::int64_t _total;
    std::atomic<std::int64_t> _done = 0;
};

// For parallel loops: the work of the thread that begins one, null if it has no scope, and a
// helping thread's part in it.
Work* currentWork();
class WorkShare {
public:
    explicit WorkShare(Work* work);
    ~WorkShare();
    WorkShare(const WorkShare&) = delete;
    WorkShare& operator=(const WorkShare&) = delete;

private:
    Work* _before;
};

} // namespace foundation
