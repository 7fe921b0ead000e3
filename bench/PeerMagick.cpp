// The comparison's operations as ImageMagick offers them, each on a copy in its own memory.
#include "bench/Peers.h"

#include <wand/MagickWand.h>

namespace bench {

namespace {

std::function<void()> change(MagickWand* source, const std::function<void(MagickWand*)>& operation)
{
    return [source, operation] {
        MagickWand* const copy = CloneMagickWand(source);
        operation(copy);
        DestroyMagickWand(copy);
    };
}

} // namespace

Operations magickOn(const imaging::BitmapRef& picture)
{
    MagickWandGenesis();
    MagickSetResourceLimit(ThreadResource, 2);
    MagickWand* const source = NewMagickWand();
    MagickConstituteImage(source, picture->width(), picture->height(), "RGBA", CharPixel,
                          picture->row(0));
    const auto blur = [=](double sigma) {
        return change(source, [=](MagickWand* wand) { MagickBlurImage(wand, 0, sigma); });
    };
    const auto motion = [=](double degrees) {
        // So soft that all 41 weigh alike.
        return change(source,
                      [=](MagickWand* wand) { MagickMotionBlurImage(wand, 41, 1000, degrees); });
    };
    const std::size_t width = picture->width(), height = picture->height();
    return {
        {"gauss 7", blur(7)},
        {"motion 20", motion(0)},
        {"motion turned", motion(kTurned * 57.29578)},
        {"unsharp 2.5",
         change(source, [](MagickWand* wand) { MagickUnsharpMaskImage(wand, 0, 2.5, 0.5, 0); })},
        {"noise reduction", change(source, [](MagickWand* wand) { MagickEnhanceImage(wand); })},
        {"edges", change(source, [](MagickWand* wand) { MagickEdgeImage(wand, 1); })},
        {"pixellate 8", change(source,
                               [=](MagickWand* wand) {
                                   MagickScaleImage(wand, width / 8, height / 8);
                                   MagickSampleImage(wand, width, height);
                               })},
        {"invert", change(source, [](MagickWand* wand) { MagickNegateImage(wand, MagickFalse); })},
        {"gamma", change(source, [](MagickWand* wand) { MagickGammaImage(wand, 1 / 0.7); })},
        {"posterize",
         change(source, [](MagickWand* wand) { MagickPosterizeImage(wand, 6, MagickFalse); })},
    };
}

} // namespace bench
