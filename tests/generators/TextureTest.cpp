// The texture: its walks followed step by step, tiles, and what a colour change costs.
#include "generators/ColorSchemes.h"
#include "generators/Random.h"
#include "tests/generators/Generate.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace support;

namespace {

constexpr const char* kClass = "GLIF_Texture";

Dictionary texture(int type, int iterations, int tiles = 1)
{
    return {{"GLIFShapesType", type},
            {"GLIFIter", iterations},
            {"GLIFTile", tiles},
            {"GLIFColorScheme", 4},
            {"GLIFSchemeKeyColor", 0.52f}};
}

// Every move with its remainders, straight from rand.
std::vector<int> walkedCounts(int type, int iterations, int width, int height, unsigned seed)
{
    std::vector<int> counts(width * height);
    std::srand(seed);
    int x = std::rand() % width;
    int y = std::rand() % height;
    const int steps = static_cast<int>(width * height * iterations / 5.0);
    for (int step = 0; step < steps; ++step) {
        counts[x * height + y] += std::rand() % 5;
        const int dx = std::rand() % 3;
        switch (type) {
        case 0:
            x = (width + dx + x - 1) % width;
            y = (height + std::rand() % 3 + y - 1) % height;
            break;
        case 1:
            x = (width + dx + x - 1) % width;
            y = (y + height + 1) % height;
            break;
        case 3:
            x = (width + dx + y - 1) % width;
            y = (height + std::rand() % 3 + x - 1) % height;
            break;
        default: {
            const float s = height < 20 ? 0 : static_cast<float>(y) / (height / 20);
            const int moved = static_cast<int>(x + std::sin(double(s)) * 3.0 + dx - 1.0 + width);
            x = ((moved % width) + width) % width;
            y = (height + std::rand() % 3 + y - 1) % height;
        }
        }
    }
    return counts;
}

} // namespace

TEST(RandomRun, GoesOnWhereRandIsAndLeavesItWhereItEnds)
{
    std::srand(5);
    std::vector<int> expected;
    for (int i = 0; i < 700; ++i)
        expected.push_back(std::rand());
    for (const int before : {0, 1, 40, 333}) {
        std::srand(5);
        generators::restartRandomDraws();
        std::vector<int> drawn;
        while (static_cast<int>(drawn.size()) < before)
            drawn.push_back(generators::randomInt());
        for (const int length : {0, 1, 2, 27, 31, 70}) {
            generators::RandomRun run;
            for (int i = 0; i < length; ++i)
                drawn.push_back(run.next());
            std::vector<int> atOnce(length);
            run.take(atOnce.data(), atOnce.size());
            drawn.insert(drawn.end(), atOnce.begin(), atOnce.end());
        }
        EXPECT_EQ(generators::randomDraws(), drawn.size());
        while (drawn.size() < expected.size())
            drawn.push_back(std::rand());
        EXPECT_EQ(drawn, expected) << before;
    }
}

TEST(Texture, CountsTheWalk)
{
    const int sizes[][2] = {{37, 52}, {60, 19}, {1, 40},  {3, 61},
                            {2, 2},   {1, 1},   {5, 230}, {4, 25}};
    for (const int type : {0, 1, 2, 3, 4, -1})
        for (const auto& [width, height] : sizes) {
            const auto generator = makeGenerator(kClass);
            generate(*generator, width, height, texture(type, 11), 8);
            const int steps = static_cast<int>(width * height * 11 / 5.0);
            EXPECT_EQ(generators::randomDraws(), 2u + steps * (type == 1 ? 2u : 3u));
            const std::vector<int> counts = walkedCounts(type, 11, width, height, 8);
            const int most = *std::max_element(counts.begin(), counts.end());
            for (int i = 0; i < width * height; ++i) {
                const float value = most == 0 ? 0 : static_cast<float>(counts[i]) / most;
                ASSERT_EQ(generator->GLIFPrefetchBuffer()[i], value)
                    << type << ' ' << width << ' ' << i;
            }
        }
}

TEST(Texture, LaysTilesFromTheUpperLeft)
{
    const int width = 50, height = 47;
    const struct {
        int wanted, tiles;
    } cases[] = {{1, 1}, {0, 1}, {3, 3}, {-3, 3}, {9, 9}, {10, 9}, {-2'147'483'647 - 1, 9}};
    for (const auto& [wanted, tiles] : cases) {
        const auto generator = makeGenerator(kClass);
        const PictureRef picture = generate(*generator, width, height, texture(0, 20, wanted));
        const int tileWidth = width / tiles, tileHeight = height / tiles;
        for (int x = 0; x < width; ++x)
            for (int y = 0; y < height; ++y) {
                const double value =
                    generator->GLIFPrefetchBuffer()[x % tileWidth * tileHeight + y % tileHeight];
                const auto color =
                    generators::computeSchemeColor(value, static_cast<double>(0.52f), 4);
                const auto* bytes = reinterpret_cast<const std::uint8_t*>(
                    picture->bitmap()->rowAs<std::uint32_t>(y) + x);
                ASSERT_EQ(bytes[0], int(color.red * 255.0));
                ASSERT_EQ(bytes[1], int(color.green * 255.0));
                ASSERT_EQ(bytes[2], int(color.blue * 255.0));
                ASSERT_EQ(bytes[3], 255);
            }
    }
    // Smaller than the number of tiles: each pixel is one.
    const std::string bytes = bytesOf(generate(kClass, 4, 1, texture(0, 20, 9)));
    EXPECT_EQ(bytes.substr(0, 12), bytes.substr(4));
}

TEST(Texture, DrawsTwoNumbersForAColor)
{
    const auto generator = makeGenerator(kClass);
    const PictureRef first = generate(*generator, 60, 50, texture(2, 30, 2), 3);
    Dictionary recolored = texture(2, 30, 2);
    for (const int scheme : {0, 1, 3, 7, 20}) {
        recolored.set("GLIFColorScheme", scheme);
        const PictureRef again = generate(*generator, 60, 50, recolored, 77);
        EXPECT_EQ(generators::randomDraws(), 2u);
        EXPECT_EQ(generator->fieldsComputed(), 1);
        EXPECT_EQ(bytesOf(again), bytesOf(generate(kClass, 60, 50, recolored, 3)));
        EXPECT_NE(bytesOf(again), bytesOf(first));
    }
}

TEST(Texture, KeepsParametersThatACallLeavesOut)
{
    const auto generator = makeGenerator(kClass);
    generate(*generator, 40, 40, {});
    EXPECT_EQ(generators::randomDraws(), 2u); // no steps yet
    generate(*generator, 30, 40, texture(1, 10, 2));
    generate(*generator, 40, 40, {});
    EXPECT_EQ(generators::randomDraws(), 2u + 2 * (20 * 20 * 2));
}

TEST(Texture, Pictures)
{
    Dictionary attributes = defaultsOf(*makeGenerator(kClass));
    expectGolden("texture-wandering", *generate(kClass, 128, 96, attributes)->bitmap());
    attributes.set("GLIFShapesType", 1);
    attributes.set("GLIFTile", 2);
    attributes.set("GLIFColorScheme", 7);
    expectGolden("texture-streaks-tiled-whole-wheel",
                 *generate(kClass, 128, 96, attributes)->bitmap());
    attributes.set("GLIFShapesType", 2);
    attributes.set("GLIFTile", 1);
    attributes.set("GLIFColorScheme", 0);
    expectGolden("texture-waves-two-hues", *generate(kClass, 128, 96, attributes)->bitmap());
}
