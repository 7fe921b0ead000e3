#include "editor/Presets.h"

#include "editor/Preferences.h"
#include "platform/codecs/Codecs.h"
#include "platform/foundation/Log.h"

#include <QFileInfo>
#include <QString>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace editor {

namespace fs = std::filesystem;
using foundation::Done;
using foundation::Error;
using foundation::Result;
using foundation::Status;

namespace {

constexpr std::string_view kExtension = ".recipe";
constexpr std::size_t kLongestFileName = 255;
constexpr std::uintmax_t kLargestFile = 1 << 20;

std::string inQuotes(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

Result<std::string> contentOf(const fs::path& file)
{
    std::error_code error;
    if (!fs::is_regular_file(file, error))
        return Error{"is no file"};
    if (fs::file_size(file, error) > kLargestFile || error)
        return Error{"is too large"};
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    if (stream.peek() != std::ifstream::traits_type::eof())
        bytes << stream.rdbuf();
    if (!stream.is_open() || stream.bad())
        return Error{"cannot be read"};
    return bytes.str();
}

Result<plugin::RecipeStep> stepIn(const fs::path& file, std::string_view identifier)
{
    const Result<std::string> text = contentOf(file);
    if (!text)
        return Error{text.error()};
    Result<plugin::Recipe> recipe = plugin::parseRecipe(*text);
    if (!recipe)
        return Error{recipe.error()};
    if (recipe->size() != 1 || recipe->front().identifier != identifier)
        return Error{"is not one step of " + std::string(identifier)};
    return std::move(recipe->front());
}

Status write(const fs::path& file, std::string_view text)
{
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error)
        return Error{"can't make the folder " + inQuotes(file.parent_path().string()) + ": " +
                     error.message()};
    return codecs::writeFileAtomically(file, text);
}

QString shown(const std::string& name)
{
    return QString::fromStdString(name);
}

int hexDigit(char c)
{
    return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::string_view withoutBlanks(std::string_view line)
{
    const std::size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

// The identifier on a line of the favourites; empty on a comment.
std::string_view favouriteOn(std::string_view line)
{
    return withoutBlanks(line.substr(0, line.find('#')));
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

std::string fileNameOf(std::string_view text)
{
    std::string name;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f || c == '/' || c == '%' || (c == '.' && name.empty())) {
            constexpr char kDigits[] = "0123456789ABCDEF";
            name += '%';
            name += kDigits[byte >> 4];
            name += kDigits[byte & 15];
        } else {
            name += c;
        }
    }
    return name;
}

std::string textOfFileName(std::string_view fileName)
{
    std::string text;
    for (std::size_t i = 0; i < fileName.size(); ++i) {
        const int high = i + 2 < fileName.size() ? hexDigit(fileName[i + 1]) : -1;
        const int low = i + 2 < fileName.size() ? hexDigit(fileName[i + 2]) : -1;
        if (fileName[i] == '%' && high >= 0 && low >= 0) {
            text += static_cast<char>(high << 4 | low);
            i += 2;
        } else {
            text += fileName[i];
        }
    }
    return text;
}

Presets::Presets() : Presets(fs::path(QFileInfo(Preferences().fileName()).path().toStdString())) {}

fs::path Presets::folderOf(std::string_view identifier) const
{
    return _folder / "presets" / fileNameOf(identifier);
}

// All files that stand for the name: what people have named may be written in several ways.
std::vector<fs::path> Presets::filesOf(std::string_view identifier, std::string_view name) const
{
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator it(folderOf(identifier), error), end; !error && it != end;
         it.increment(error))
        if (it->path().extension() == kExtension &&
            textOfFileName(it->path().stem().string()) == name)
            files.push_back(it->path());
    return files;
}

std::vector<Preset> Presets::ofEntry(std::string_view identifier) const
{
    std::vector<Preset> presets;
    std::error_code error;
    for (fs::directory_iterator it(folderOf(identifier), error), end; !error && it != end;
         it.increment(error)) {
        const fs::path& file = it->path();
        // Hidden files are others' temporary ones.
        if (file.extension() != kExtension || file.filename().string().starts_with('.'))
            continue;
        Result<plugin::RecipeStep> step = stepIn(file, identifier);
        if (!step) {
            foundation::log("The preset " + inQuotes(file.string()) + ": " + step.error());
            continue;
        }
        std::string name = textOfFileName(file.stem().string());
        if (std::ranges::find(presets, name, &Preset::name) == presets.end())
            presets.push_back({std::move(name), *std::move(step)});
    }
    std::ranges::sort(presets, [](const Preset& a, const Preset& b) {
        const int order =
            QString::localeAwareCompare(shown(a.name).toCaseFolded(), shown(b.name).toCaseFolded());
        return order != 0 ? order < 0 : a.name < b.name;
    });
    return presets;
}

bool Presets::contains(std::string_view identifier, std::string_view name) const
{
    return !filesOf(identifier, name).empty();
}

Status Presets::save(std::string_view name, const plugin::RecipeStep& step) const
{
    if (withoutBlanks(name).empty())
        return Error{"A preset needs a name"};
    const std::string fileName = fileNameOf(name) + std::string(kExtension);
    if (fileName.size() > kLongestFileName)
        return Error{"The name of the preset is too long"};
    const fs::path file = folderOf(step.identifier) / fileName;
    if (Status done = write(file, plugin::recipeText({step})); !done)
        return done;
    std::error_code error;
    for (const fs::path& other : filesOf(step.identifier, name))
        if (other.filename() != file.filename())
            fs::remove(other, error);
    return Done{};
}

Status Presets::remove(std::string_view identifier, std::string_view name) const
{
    for (const fs::path& file : filesOf(identifier, name)) {
        std::error_code error;
        if (!fs::remove(file, error) && error)
            return Error{"can't delete " + inQuotes(file.string()) + ": " + error.message()};
    }
    return Done{};
}

std::vector<std::string> Presets::favourites() const
{
    std::vector<std::string> identifiers;
    const Result<std::string> text = contentOf(_folder / "favourites");
    if (!text)
        return identifiers;
    for (const std::string& line : linesOf(*text)) {
        const std::string identifier(favouriteOn(line));
        if (!identifier.empty() && std::ranges::find(identifiers, identifier) == identifiers.end())
            identifiers.push_back(identifier);
    }
    return identifiers;
}

bool Presets::isFavourite(std::string_view identifier) const
{
    const std::vector<std::string> all = favourites();
    return std::ranges::find(all, identifier) != all.end();
}

Status Presets::setFavourite(std::string_view identifier, bool on) const
{
    if (identifier.empty() || isFavourite(identifier) == on)
        return Done{};
    const fs::path file = _folder / "favourites";
    std::error_code error;
    const Result<std::string> present = contentOf(file);
    if (!present && fs::exists(file, error))
        return Error{inQuotes(file.string()) + ' ' + present.error()};
    std::string text;
    if (present)
        for (const std::string& line : linesOf(*present))
            if (favouriteOn(line) != identifier)
                text += line + '\n';
    if (on)
        text.append(identifier).append("\n");
    return write(file, text);
}

} // namespace editor
