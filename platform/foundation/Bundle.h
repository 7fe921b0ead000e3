// Where the library's own files are, and the strings it shows in the user's language.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace foundation {

// The folder that the library was loaded from: the one of the variant for this processor where
// there are several. Empty when that cannot be told.
std::filesystem::path libraryFolder();

// The folder share/CoreImageFilter that belongs to the loaded library: beside it in a build tree
// and in an installed one. The environment variable CIF_RESOURCES, when set, names the folder
// instead. Empty when there is none.
std::filesystem::path resourceFolder();

// A resource by name and type ("whiteBall", "tiff") in a sub-folder of the resource folder ("" for
// the folder itself). Nothing when there is no such file.
std::optional<std::filesystem::path> resourcePath(std::string_view name, std::string_view type,
                                                  std::string_view subfolder = {});

// The translation of the key in the string tables of the user's languages, else its English text,
// which is the key itself but for a few long ones.
std::string localizedString(std::string_view key);

// Forces a language ("de", "fr_CA", …; "en" or "C" for the English texts); "" follows the locale of
// the environment again (LANGUAGE, LC_ALL, LC_MESSAGES, LANG), as it stands at the time.
void setLanguage(std::string_view language);

// The language that most strings come in: the name of a string table, such as "de"; "en" without
// any other.
std::string language();

} // namespace foundation
