// Pixels that wait until they are let go, so that what uses them waits, too.
#pragma once

#include "platform/drawing/Picture.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

class HeldPixels final : public drawing::DeferredSource {
public:
    explicit HeldPixels(imaging::BitmapRef pixels) : _pixels(std::move(pixels)) {}
    int pixelsWide() const override { return _pixels->width(); }
    int pixelsHigh() const override { return _pixels->height(); }
    imaging::BitmapRef render() const override
    {
        std::unique_lock lock(_lock);
        asked = true;
        _changed.wait(lock, [&] { return _free; });
        return _pixels;
    }
    void letGo()
    {
        const std::lock_guard lock(_lock);
        _free = true;
        _changed.notify_all();
    }
    mutable std::atomic<bool> asked = false;

private:
    imaging::BitmapRef _pixels;
    mutable std::mutex _lock;
    mutable std::condition_variable _changed;
    bool _free = false;
};
