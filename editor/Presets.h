// Favourites and named presets: readable text files in the user's configuration folder, which other
// programs may change at any time. Nothing of them is kept in memory.
//
//     FOLDER/presets/ENTRY/NAME.recipe   one step each, as in recipes
//     FOLDER/favourites                  one identifier to a line, # for comments
#pragma once

#include "plugin/Recipe.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace editor {

struct Preset {
    std::string name; // as the user wrote it, UTF-8
    plugin::RecipeStep step;
};

class Presets {
public:
    // The folder of the preferences.
    Presets();
    explicit Presets(std::filesystem::path folder) : _folder(std::move(folder)) {}

    const std::filesystem::path& folder() const { return _folder; }

    // Of an entry, by name without regard to case. A file that is broken, or for another entry, is
    // left out with a line in the log.
    std::vector<Preset> ofEntry(std::string_view identifier) const;
    bool contains(std::string_view identifier, std::string_view name) const;
    // Replaces the one of that name. The error is for the user.
    foundation::Status save(std::string_view name, const plugin::RecipeStep& step) const;
    // Done when there was none.
    foundation::Status remove(std::string_view identifier, std::string_view name) const;

    // In the order in which they were made favourites, each once.
    std::vector<std::string> favourites() const;
    bool isFavourite(std::string_view identifier) const;
    // Keeps the file's comments.
    foundation::Status setFavourite(std::string_view identifier, bool on) const;

private:
    std::filesystem::path folderOf(std::string_view identifier) const;
    std::vector<std::filesystem::path> filesOf(std::string_view identifier,
                                               std::string_view name) const;

    std::filesystem::path _folder;
};

// A file name for any text: what a file name cannot hold, and a leading point, becomes %XX, and so
// does every per cent sign.
std::string fileNameOf(std::string_view text);
// The text again. A per cent sign that begins no %XX stands for itself: people name files, too.
std::string textOfFileName(std::string_view fileName);

} // namespace editor
