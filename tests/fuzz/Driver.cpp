// Runs a fuzz target without libFuzzer, with inputs from files and, as long as it is told to, with
// changed copies of them (without files: with bytes out of nothing).
//
//   fuzz-codecs corpus/codecs            the files of the folder
//   fuzz-codecs --seconds 60 FILE…       others on every start
//   fuzz-codecs --runs 300 --seed 1      the same ones every time
//
// Each changed input is written to test-output/<program>.input in the build tree before it is used,
// so that the last one is at hand after a crash or a hang (60 seconds for one input).
#include "platform/foundation/Log.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;
using Random = std::mt19937;

struct Plan {
    std::string program;
    std::vector<fs::path> files;
    long runs = 0, seconds = 0;
    std::uint32_t seed = std::random_device{}();
};

Plan planned(int count, char** arguments)
{
    Plan plan;
    plan.program = fs::path(arguments[0]).filename();
    for (int i = 1; i < count; ++i) {
        const std::string_view word = arguments[i];
        const auto next = [&] { return i + 1 < count ? std::atol(arguments[++i]) : 0; };
        if (word == "--seconds")
            plan.seconds = next();
        else if (word == "--runs")
            plan.runs = next();
        else if (word == "--seed")
            plan.seed = std::uint32_t(next());
        else if (fs::is_directory(word))
            for (const auto& entry : fs::recursive_directory_iterator(word))
                plan.files.push_back(entry.path());
        else
            plan.files.emplace_back(word);
    }
    std::sort(plan.files.begin(), plan.files.end());
    return plan;
}

void use(std::string_view bytes)
{
    alarm(60);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    alarm(0);
}

std::string contents(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "%s cannot be read\n", file.c_str());
        std::exit(2);
    }
    return {std::istreambuf_iterator<char>(in), {}};
}

// A starting input with a few bytes changed, cut, doubled or moved; or bytes out of nothing.
std::string nextInput(const std::vector<std::string>& starts, Random& random)
{
    const auto below = [&](std::size_t n) { return n ? random() % n : 0; };
    std::string bytes;
    if (starts.empty()) {
        bytes.resize(8 + below(400));
        for (char& c : bytes)
            c = char(random());
        return bytes;
    }
    bytes = starts[below(starts.size())];
    for (std::size_t changes = 1 + below(6); changes && !bytes.empty(); --changes) {
        const std::size_t at = below(bytes.size()), length = below(bytes.size() - at);
        switch (below(6)) {
        case 0:
            bytes[at] = char(random());
            break;
        case 1:
            bytes[at] = char(bytes[at] ^ (1 << below(8)));
            break;
        case 2:
            bytes.resize(at);
            break;
        case 3:
            bytes.erase(at, 1 + length % 16);
            break;
        case 4:
            bytes.insert(at, bytes.substr(at, 1 + length % 64));
            break;
        case 5: // a length or a count at one of its ends
            std::memset(bytes.data() + at, random() % 2 ? 0xff : 0,
                        std::min<std::size_t>(4, bytes.size() - at));
            break;
        }
    }
    return bytes;
}

} // namespace

int main(int count, char** arguments)
{
    const Plan plan = planned(count, arguments);
    foundation::setLogSink([](std::string_view) {}); // complaints are expected

    std::vector<std::string> starts;
    for (const fs::path& file : plan.files) {
        starts.push_back(contents(file));
        std::printf("%s\n", file.c_str());
        std::fflush(stdout); // the last line names the file that fails
        use(starts.back());
    }

    const fs::path kept = fs::path(CIF_TEST_OUTPUT) / (plan.program + ".input");
    fs::create_directories(kept.parent_path());
    Random random(plan.seed);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(plan.seconds);
    long made = 0;
    for (; made < plan.runs || std::chrono::steady_clock::now() < end; ++made) {
        const std::string input = nextInput(starts, random);
        std::ofstream(kept, std::ios::binary) << input;
        use(input);
    }
    fs::remove(kept);
    std::printf("%s: %zu files and %ld changed inputs, seed %u\n", plan.program.c_str(),
                starts.size(), made, plan.seed);
    return starts.empty() && made == 0 ? 2 : 0;
}
