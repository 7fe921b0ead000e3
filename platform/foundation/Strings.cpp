// The strings shown to the user: gettext tables in the user's language, English text behind them.
#include "platform/foundation/Bundle.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <vector>

namespace foundation {

namespace {

struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
};
using Table = std::unordered_map<std::string, std::string, Hash, std::equal_to<>>;

// A compiled table (.mo): magic number, revision, count, then where the two lists of (length,
// offset) pairs of keys and translations start; 32-bit numbers in the byte order of the machine
// that wrote them. Empty when anything points outside the file.
Table parseTable(std::string_view file)
{
    bool swapped = false;
    const auto word = [&](std::size_t offset) -> std::optional<std::uint32_t> {
        if (offset > file.size() || file.size() - offset < 4)
            return {};
        std::uint32_t v;
        std::memcpy(&v, file.data() + offset, 4);
        return swapped ? std::byteswap(v) : v;
    };
    const auto text = [&](std::size_t pair) -> std::optional<std::string_view> {
        const auto length = word(pair), offset = word(pair + 4);
        if (!length || !offset || *offset > file.size() || file.size() - *offset <= *length ||
            file[*offset + *length] != '\0')
            return {};
        return file.substr(*offset, *length);
    };

    constexpr std::uint32_t kMagic = 0x950412de;
    const auto magic = word(0);
    if (!magic || (*magic != kMagic && std::byteswap(*magic) != kMagic))
        return {};
    swapped = *magic != kMagic;
    const auto count = word(8), keys = word(12), translations = word(16);
    if (!count || !keys || !translations || *count > file.size() / 16)
        return {};

    Table table;
    for (std::size_t i = 0; i < *count; ++i) {
        const auto key = text(*keys + i * 8), translation = text(*translations + i * 8);
        if (!key || !translation)
            return {};
        // The empty key holds the table's header.
        if (!key->empty() && !translation->empty())
            table.emplace(*key, *translation);
    }
    return table;
}

Table readTable(const std::string& language)
{
    const std::filesystem::path folder = resourceFolder();
    if (folder.empty())
        return {};
    std::ifstream in(folder / "locale" / language / "LC_MESSAGES" / "CoreImageFilter.mo",
                     std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    return parseTable(bytes);
}

// The tables that may serve a locale name, best first: "de_CH.UTF-8@euro" is looked for as
// "de_CH@euro", "de@euro", "de_CH" and "de". Nothing for what cannot be a folder name.
void appendCandidates(std::string_view locale, std::vector<std::string>& names)
{
    const auto fits = [](unsigned char c) {
        return std::isalnum(c) || c == '_' || c == '-' || c == '.' || c == '@';
    };
    if (locale.empty() || locale.front() == '.' || !std::ranges::all_of(locale, fits))
        return;
    const std::string_view modifier = locale.substr(std::min(locale.find('@'), locale.size()));
    const std::string_view place = locale.substr(0, locale.find_first_of(".@"));
    const std::string_view language = place.substr(0, place.find('_'));
    for (const std::string_view ending : {modifier, std::string_view()})
        for (const std::string_view name : {place, language}) {
            std::string full = std::string(name) + std::string(ending);
            if (std::ranges::find(names, full) == names.end())
                names.push_back(std::move(full));
        }
}

std::string_view environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

bool isPlainLocale(std::string_view locale)
{
    return locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.");
}

// The user's languages, best first. LANGUAGE, a list, refines the locale but does not replace the
// plain one.
std::vector<std::string> languagesOfEnvironment()
{
    std::vector<std::string> names;
    std::string_view locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (locale.empty())
            locale = environment(variable);
    if (isPlainLocale(locale))
        return names;
    for (std::string_view rest = environment("LANGUAGE"); !rest.empty();) {
        const std::size_t end = rest.find(':');
        appendCandidates(rest.substr(0, end), names);
        rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
    }
    appendCandidates(locale, names);
    return names;
}

class Strings {
public:
    Strings() { use({}); }

    void use(std::string_view language)
    {
        std::vector<std::string> names;
        if (language.empty())
            names = languagesOfEnvironment();
        else if (!isPlainLocale(language))
            appendCandidates(language, names);
        // The keys are English, so a list of languages ends where it names English; its table holds
        // the few texts whose key is only a name for them.
        const auto english = std::ranges::find_if(names, [](const std::string& n) {
            return n == "en" || n.starts_with("en_") || n.starts_with("en@");
        });
        if (english != names.end()) {
            const std::string first = *english;
            names.erase(english, names.end());
            names.push_back(first);
        }
        names.emplace_back("en");

        _tables.clear();
        _language.clear();
        for (const std::string& name : names)
            if (Table table = readTable(name); !table.empty()) {
                _tables.push_back(std::move(table));
                if (_language.empty())
                    _language = name;
            }
    }

    const std::string& language() const { return _language; }

    std::string lookUp(std::string_view key) const
    {
        for (const Table& table : _tables)
            if (const auto found = table.find(key); found != table.end())
                return found->second;
        return std::string(key);
    }

private:
    std::vector<Table> _tables; // best first
    std::string _language;      // of the first
};

Strings& strings()
{
    static Strings shared;
    return shared;
}

} // namespace

std::string localizedString(std::string_view key)
{
    return strings().lookUp(key);
}

void setLanguage(std::string_view language)
{
    strings().use(language);
}

std::string language()
{
    return strings().language();
}

} // namespace foundation
