// The comparison's operations as GEGL offers them, each one graph blitted into memory.
#include "bench/Peers.h"

#include <gegl.h>

#include <variant>
#include <vector>

namespace bench {

namespace {

struct Step {
    const char* operation;
    std::vector<std::pair<const char*, std::variant<double, int>>> values;
    bool isSource = false; // draws by itself, without the picture
};

std::function<void()> graph(GeglBuffer* source, const GeglRectangle& all, std::vector<Step> steps)
{
    return [source, all, steps = std::move(steps)] {
        static std::vector<unsigned char> pixels;
        pixels.resize(std::size_t{4} * all.width * all.height);
        GeglNode* root = gegl_node_new();
        GeglNode* last =
            gegl_node_new_child(root, "operation", "gegl:buffer-source", "buffer", source, nullptr);
        for (const Step& step : steps) {
            GeglNode* node = gegl_node_new_child(root, "operation", step.operation, nullptr);
            for (const auto& [name, value] : step.values)
                std::visit([&](auto v) { gegl_node_set(node, name, v, nullptr); }, value);
            if (!step.isSource)
                gegl_node_link(last, node);
            last = node;
        }
        gegl_node_blit(last, 1.0, &all, babl_format("R'G'B'A u8"), pixels.data(),
                       GEGL_AUTO_ROWSTRIDE, GEGL_BLIT_DEFAULT);
        g_object_unref(root);
    };
}

} // namespace

Operations geglOn(const imaging::BitmapRef& picture)
{
    gegl_init(nullptr, nullptr);
    g_object_set(gegl_config(), "threads", 2, "use-opencl", FALSE, nullptr);
    const GeglRectangle all{0, 0, picture->width(), picture->height()};
    GeglBuffer* source = gegl_buffer_new(&all, babl_format("R'G'B'A u8"));
    gegl_buffer_set(source, &all, 0, babl_format("R'G'B'A u8"), picture->row(0),
                    static_cast<int>(picture->bytesPerRow()));
    const double x = all.width * 0.5, y = all.height * 0.5;
    return {
        {"sobel", graph(source, all, {{"gegl:edge-sobel", {}}})},
        {"gauss 7",
         graph(source, all, {{"gegl:gaussian-blur", {{"std-dev-x", 7.0}, {"std-dev-y", 7.0}}}})},
        {"gauss 50",
         graph(source, all, {{"gegl:gaussian-blur", {{"std-dev-x", 50.0}, {"std-dev-y", 50.0}}}})},
        {"box 10", graph(source, all, {{"gegl:box-blur", {{"radius", 10}}}})},
        {"motion 20",
         graph(source, all, {{"gegl:motion-blur-linear", {{"length", 41.0}, {"angle", 0.0}}}})},
        {"motion turned",
         graph(source, all, {{"gegl:motion-blur-linear", {{"length", 41.0}, {"angle", 28.65}}}})},
        {"unsharp 2.5",
         graph(source, all, {{"gegl:unsharp-mask", {{"std-dev", 2.5}, {"scale", 0.5}}}})},
        {"noise reduction", graph(source, all, {{"gegl:noise-reduction", {{"iterations", 1}}}})},
        {"noise / median", graph(source, all, {{"gegl:median-blur", {{"radius", 2}}}})},
        {"edges", graph(source, all, {{"gegl:edge-sobel", {}}})},
        {"pixellate 8", graph(source, all, {{"gegl:pixelize", {{"size-x", 8}, {"size-y", 8}}}})},
        {"invert", graph(source, all, {{"gegl:invert-gamma", {}}})},
        {"gamma", graph(source, all, {{"gegl:gamma", {{"value", 0.7}}}})},
        {"posterize", graph(source, all, {{"gegl:posterize", {{"levels", 6}}}})},
        {"checkerboard", graph(source, all, {{"gegl:checkerboard", {{"x", 80}, {"y", 80}}, true}})},
        {"affine", graph(source, all,
                         {{"gegl:rotate",
                           {{"origin-x", x}, {"origin-y", y}, {"degrees", kAngle * 57.29578}}}})},
        {"colour", graph(source, all,
                         {{"gegl:saturation", {{"scale", 1.5}}},
                          {"gegl:gamma", {{"value", 0.7}}},
                          {"gegl:hue-chroma", {{"hue", 28.6}}}})},
    };
}

} // namespace bench
