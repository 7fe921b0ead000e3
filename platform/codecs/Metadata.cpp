// EXIF directories taken apart and put together, and recipes found in vector files. All of it comes
// from strangers: every offset is checked, and what is broken counts as absent.
#include "platform/codecs/Metadata.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace codecs {

namespace {

constexpr std::uint16_t kOrientationTag = 274;
constexpr std::uint16_t kExifTag = 34665, kGpsTag = 34853, kInteroperabilityTag = 40965;
constexpr std::size_t kHeaderSize = 8;
// No camera writes a tenth of these; overlapping values could otherwise multiply a small file.
constexpr std::size_t kMaximumTags = 4096;
constexpr std::size_t kMaximumMetadata = std::size_t{64} << 20;

// Numbers in a TIFF structure, which says itself whether they are big-endian.
class Reader {
public:
    explicit Reader(std::string_view data) : _data(data), _big(isBigEndian(data)) {}

    bool big() const { return _big; }
    bool has(std::uint64_t offset, std::uint64_t size) const
    {
        return offset <= _data.size() && size <= _data.size() - offset;
    }
    std::string_view bytes(std::uint64_t offset, std::uint64_t size) const
    {
        return _data.substr(offset, size);
    }
    // Callers have checked that the bytes are there.
    std::uint64_t number(std::uint64_t offset, int size) const
    {
        std::uint64_t value = 0;
        for (int i = 0; i < size; ++i) {
            const auto byte = static_cast<unsigned char>(_data[offset + (_big ? i : size - 1 - i)]);
            value = value << 8 | byte;
        }
        return value;
    }

private:
    std::string_view _data;
    bool _big;
};

void putNumber(std::string& out, std::size_t offset, std::uint32_t value, int size, bool big)
{
    for (int i = 0; i < size; ++i)
        out[offset + (big ? size - 1 - i : i)] = static_cast<char>(value >> 8 * i);
}

struct Directory;

struct Entry {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::string value;            // as in the file, in its byte order
    std::vector<Directory> below; // the directory this entry points to, if it is such a pointer
};

struct Directory {
    std::vector<Entry> entries;
};

// Bytes of one value of a type, 0 for a type that is not known. The eight-byte integers of large
// files are left out: they hold places in the file, never descriptions.
std::size_t sizeOfType(std::uint64_t type)
{
    static constexpr std::array<std::uint8_t, 14> kSizes = {0, 1, 1, 2, 4, 8, 1,
                                                            1, 2, 4, 8, 4, 8, 4};
    return type < kSizes.size() ? kSizes[type] : 0;
}

bool pointsToDirectory(std::uint64_t tag)
{
    return tag == kExifTag || tag == kGpsTag || tag == kInteroperabilityTag;
}

// Where the parts of a directory are, in files with 32-bit and with 64-bit offsets.
struct Layout {
    bool large = false;
    std::uint64_t first = 0; // offset of the first directory

    int countSize() const { return large ? 8 : 2; }
    int offsetSize() const { return large ? 8 : 4; }
    std::uint64_t entrySize() const { return large ? 20 : 12; }
};

std::optional<Layout> layoutOf(const Reader& in)
{
    if (!in.has(0, kHeaderSize))
        return std::nullopt;
    const std::string_view order = in.bytes(0, 2);
    const std::uint64_t version = in.number(2, 2);
    if (order != "II" && order != "MM")
        return std::nullopt;
    if (version == 42)
        return Layout{false, in.number(4, 4)};
    if (version == 43 && in.has(8, 8))
        return Layout{true, in.number(8, 8)};
    return std::nullopt;
}

// The offset and number of the entries of a directory, if they lie within the data.
struct Entries {
    std::uint64_t offset, count;
};

std::optional<Entries> entriesAt(const Reader& in, const Layout& layout, std::uint64_t offset)
{
    if (!in.has(offset, layout.countSize()))
        return std::nullopt;
    const std::uint64_t count = in.number(offset, layout.countSize());
    const std::uint64_t first = offset + layout.countSize();
    if (count > kMaximumTags || !in.has(first, count * layout.entrySize()))
        return std::nullopt;
    return Entries{first, count};
}

using TagFilter = bool (*)(std::uint64_t tag);

bool anyTag(std::uint64_t)
{
    return true;
}

// Tags that tell about the picture, as against those that tell how its pixels are stored.
bool describes(std::uint64_t tag)
{
    static constexpr std::array<std::uint64_t, 17> kTags = {
        270,   271,   272,   305,   306,   315,   316,      18246,  18249,
        33432, 40091, 40092, 40093, 40094, 40095, kExifTag, kGpsTag};
    return std::find(kTags.begin(), kTags.end(), tag) != kTags.end();
}

// Reads a directory and the ones below it. `budget` is what may still be copied.
std::optional<Directory> readDirectory(const Reader& in, const Layout& layout, std::uint64_t offset,
                                       TagFilter wanted, std::size_t& budget, int depth = 0)
{
    constexpr int kDeepest = 2;
    const std::optional<Entries> entries = entriesAt(in, layout, offset);
    if (!entries)
        return std::nullopt;
    Directory directory;
    for (std::uint64_t i = 0; i < entries->count; ++i) {
        const std::uint64_t at = entries->offset + i * layout.entrySize();
        const std::uint64_t tag = in.number(at, 2);
        const std::uint64_t type = in.number(at + 2, 2);
        const std::uint64_t count = in.number(at + 4, layout.offsetSize());
        const std::uint64_t field = at + 4 + layout.offsetSize();
        if (!wanted(tag))
            continue;
        Entry entry{static_cast<std::uint16_t>(tag),
                    static_cast<std::uint16_t>(type),
                    static_cast<std::uint32_t>(count),
                    {},
                    {}};
        if (pointsToDirectory(tag)) {
            std::optional<Directory> below;
            if (depth < kDeepest)
                below = readDirectory(in, layout, in.number(field, layout.offsetSize()), anyTag,
                                      budget, depth + 1);
            if (!below)
                continue;
            entry.type = 4;
            entry.count = 1;
            entry.below.push_back(std::move(*below));
        } else {
            const std::size_t unit = sizeOfType(type);
            if (unit == 0 || count > budget / unit)
                continue;
            const std::uint64_t size = count * unit;
            const std::uint64_t place = size <= static_cast<std::uint64_t>(layout.offsetSize())
                                            ? field
                                            : in.number(field, layout.offsetSize());
            if (!in.has(place, size))
                continue;
            budget -= size;
            entry.value = in.bytes(place, size);
        }
        directory.entries.push_back(std::move(entry));
    }
    return directory;
}

void append(std::string& out, std::uint32_t value, int size, bool big)
{
    out.resize(out.size() + size);
    putNumber(out, out.size() - size, value, size, big);
}

void alignToWord(std::string& out)
{
    if (out.size() % 2)
        out.push_back('\0');
}

// Readers of EXIF like to meet the directory first. In a whole file it comes last, so that a file
// that lost its end has lost its directory and is known to be broken.
enum class Place { BeforeValues, AfterValues };

// Adds a directory and all below it; returns where it begins.
std::uint32_t appendDirectory(std::string& out, const Directory& directory, bool big, Place place)
{
    const std::size_t tableSize = 2 + directory.entries.size() * 12 + 4;
    alignToWord(out);
    std::size_t begin = out.size();
    if (place == Place::BeforeValues)
        out.resize(begin + tableSize);
    std::string table;
    append(table, static_cast<std::uint32_t>(directory.entries.size()), 2, big);
    for (const Entry& entry : directory.entries) {
        append(table, entry.tag, 2, big);
        append(table, entry.type, 2, big);
        append(table, entry.count, 4, big);
        if (!entry.below.empty()) {
            append(table, appendDirectory(out, entry.below.front(), big, place), 4, big);
        } else if (entry.value.size() <= 4) {
            table += entry.value;
            table.append(4 - entry.value.size(), '\0');
        } else {
            alignToWord(out);
            append(table, static_cast<std::uint32_t>(out.size()), 4, big);
            out += entry.value;
        }
    }
    append(table, 0, 4, big); // no directory follows
    if (place == Place::AfterValues) {
        alignToWord(out);
        begin = out.size();
        out.resize(begin + tableSize);
    }
    std::copy(table.begin(), table.end(), out.begin() + static_cast<std::ptrdiff_t>(begin));
    return static_cast<std::uint32_t>(begin);
}

std::optional<Directory> firstDirectory(std::string_view data, TagFilter wanted)
{
    const Reader in(data);
    const std::optional<Layout> layout = layoutOf(in);
    std::size_t budget = kMaximumMetadata;
    return layout ? readDirectory(in, *layout, layout->first, wanted, budget) : std::nullopt;
}

// Offset and type of the orientation's value.
struct OrientationField {
    std::size_t offset;
    int size;
};

std::optional<OrientationField> findOrientation(const Reader& in)
{
    const std::optional<Layout> layout = layoutOf(in);
    if (!layout || layout->large)
        return std::nullopt;
    const std::optional<Entries> entries = entriesAt(in, *layout, layout->first);
    if (!entries)
        return std::nullopt;
    for (std::uint64_t i = 0; i < entries->count; ++i) {
        const std::uint64_t at = entries->offset + i * layout->entrySize();
        const std::uint64_t type = in.number(at + 2, 2);
        if (in.number(at, 2) == kOrientationTag && in.number(at + 4, 4) == 1 &&
            (type == 1 || type == 3 || type == 4))
            return OrientationField{at + 8, static_cast<int>(sizeOfType(type))};
    }
    return std::nullopt;
}

// Skips white space, which may break a long line; ends at the first other character.
std::string base64Decoded(std::string_view text)
{
    std::string plain;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        int digit;
        if (c >= 'A' && c <= 'Z')
            digit = c - 'A';
        else if (c >= 'a' && c <= 'z')
            digit = c - 'a' + 26;
        else if (c >= '0' && c <= '9')
            digit = c - '0' + 52;
        else if (c == '+')
            digit = 62;
        else if (c == '/')
            digit = 63;
        else if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            continue;
        else
            break;
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            plain.push_back(static_cast<char>(bits >> count));
        }
    }
    return plain;
}

std::string recipeAfterMark(std::string_view text)
{
    const std::string mark = std::string(kRecipeMark) + ":";
    const std::size_t at = text.find(mark);
    return at == std::string_view::npos ? std::string()
                                        : base64Decoded(text.substr(at + mark.size()));
}

void appendUtf8(std::string& out, std::uint32_t c)
{
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
        return;
    }
    const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    static constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
    out.push_back(static_cast<char>(kLead[following] | c >> 6 * following));
    for (int i = following - 1; i >= 0; --i)
        out.push_back(static_cast<char>(0x80 | (c >> 6 * i & 0x3F)));
}

// XML text with its entities replaced; an unknown one stays as it is.
std::string xmlUnescaped(std::string_view text)
{
    static constexpr std::pair<std::string_view, char> kNamed[] = {
        {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
    constexpr std::size_t kLongest = 10;
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t end =
            text[i] == '&' ? text.substr(i, kLongest).find(';') : std::string_view::npos;
        if (end == std::string_view::npos) {
            plain.push_back(text[i]);
            continue;
        }
        const std::string name(text.substr(i + 1, end - 1));
        const auto* known = std::find_if(std::begin(kNamed), std::end(kNamed),
                                         [&](const auto& n) { return n.first == name; });
        if (known != std::end(kNamed)) {
            plain.push_back(known->second);
        } else if (name.size() > 1 && name[0] == '#') {
            const bool hex = name[1] == 'x';
            const unsigned long c =
                std::strtoul(name.c_str() + (hex ? 2 : 1), nullptr, hex ? 16 : 10);
            if (c > 0 && c <= 0x10FFFF)
                appendUtf8(plain, static_cast<std::uint32_t>(c));
        } else {
            plain += text.substr(i, end + 1);
        }
        i += end;
    }
    return plain;
}

} // namespace

bool isBigEndian(std::string_view tiffOrExif)
{
    return tiffOrExif.starts_with("MM");
}

int exifOrientation(std::string_view block)
{
    const Reader in(block);
    const std::optional<OrientationField> field = findOrientation(in);
    const std::uint64_t value = field ? in.number(field->offset, field->size) : 1;
    return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void resetExifOrientation(std::string& block)
{
    const Reader in(block);
    if (const std::optional<OrientationField> field = findOrientation(in))
        putNumber(block, field->offset, 1, field->size, in.big());
}

std::string exifOfTiff(std::string_view file)
{
    const std::optional<Directory> directory = firstDirectory(file, describes);
    if (!directory || directory->entries.empty())
        return {};
    const bool big = isBigEndian(file);
    std::string block(big ? "MM" : "II");
    append(block, 42, 2, big);
    append(block, kHeaderSize, 4, big);
    appendDirectory(block, *directory, big, Place::BeforeValues);
    return block;
}

std::string tiffText(std::string_view file, std::uint16_t tag)
{
    const Reader in(file);
    const std::optional<Layout> layout = layoutOf(in);
    const std::optional<Entries> entries =
        layout ? entriesAt(in, *layout, layout->first) : std::nullopt;
    for (std::uint64_t i = 0; entries && i < entries->count; ++i) {
        const std::uint64_t at = entries->offset + i * layout->entrySize();
        const std::uint64_t type = in.number(at + 2, 2);
        if (in.number(at, 2) != tag || sizeOfType(type) != 1)
            continue;
        const std::uint64_t size = in.number(at + 4, layout->offsetSize());
        const std::uint64_t field = at + 4 + layout->offsetSize();
        const std::uint64_t place = size <= static_cast<std::uint64_t>(layout->offsetSize())
                                        ? field
                                        : in.number(field, layout->offsetSize());
        if (!in.has(place, size) || size > kMaximumMetadata)
            return {};
        std::string text(in.bytes(place, size));
        // The zero at the end of an ASCII value belongs to the count, not to the text.
        if (type == 2 && text.ends_with('\0'))
            text.pop_back();
        return text;
    }
    return {};
}

void addTiffTags(std::string& file, std::string_view exif, std::uint16_t tag, std::string_view text)
{
    std::optional<Directory> directory = firstDirectory(file, anyTag);
    if (!directory)
        return;
    std::vector<Entry>& entries = directory->entries;
    if (std::optional<Directory> added = firstDirectory(exif, describes))
        std::move(added->entries.begin(), added->entries.end(), std::back_inserter(entries));
    if (!text.empty()) {
        std::string value(text);
        value.push_back('\0');
        entries.push_back({tag, 2, static_cast<std::uint32_t>(value.size()), std::move(value), {}});
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
    const auto sameTag = [](const Entry& a, const Entry& b) { return a.tag == b.tag; };
    entries.erase(std::unique(entries.begin(), entries.end(), sameTag), entries.end());
    const bool big = isBigEndian(file);
    const std::uint32_t place = appendDirectory(file, *directory, big, Place::AfterValues);
    putNumber(file, 4, place, 4, big);
}

std::string recipeOfPdf(std::string_view file)
{
    if (std::string recipe = recipeAfterMark(file); !recipe.empty())
        return recipe;
    // Newer writers keep the document's information in compressed object streams.
    constexpr std::size_t kLargestStream = std::size_t{16} << 20;
    constexpr int kMostStreams = 64;
    std::size_t at = 0;
    for (int i = 0; i < kMostStreams; ++i) {
        at = file.find("/ObjStm", at);
        if (at == std::string_view::npos)
            break;
        const std::size_t stream = file.find("stream", at += 7);
        if (stream == std::string_view::npos)
            break;
        const std::size_t data = file.find('\n', stream);
        if (data == std::string_view::npos)
            break;
        if (const std::optional<std::string> plain = inflate(file.substr(data + 1), kLargestStream))
            if (std::string recipe = recipeAfterMark(*plain); !recipe.empty())
                return recipe;
    }
    return {};
}

std::string recipeOfSvg(std::string_view file)
{
    std::size_t at = 0;
    while ((at = file.find("<metadata", at)) != std::string_view::npos) {
        const std::size_t close = file.find('>', at);
        if (close == std::string_view::npos)
            break;
        const std::string_view tag = file.substr(at, close - at);
        const std::string mark(kRecipeMark);
        if (tag.find("id=\"" + mark + "\"") != std::string_view::npos ||
            tag.find("id='" + mark + "'") != std::string_view::npos) {
            const std::size_t end = file.find("</metadata", close);
            if (end == std::string_view::npos)
                break;
            return xmlUnescaped(file.substr(close + 1, end - close - 1));
        }
        at = close;
    }
    return {};
}

std::string recipeOfEps(std::string_view file)
{
    // A comment line has a largest length, so a long recipe may be spread over several of them.
    const std::string mark = "%%" + std::string(kRecipeMark) + ":";
    std::string packed;
    std::size_t at = 0;
    while ((at = file.find(mark, at)) != std::string_view::npos) {
        at += mark.size();
        const std::size_t end = std::min(file.find_first_of("\r\n", at), file.size());
        packed += file.substr(at, end - at);
        at = end;
    }
    return base64Decoded(packed);
}

std::optional<std::string> inflate(std::string_view packed, std::size_t limit)
{
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return std::nullopt;
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    std::string plain;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(std::min<std::size_t>(packed.size(), UINT32_MAX));
    int state = Z_OK;
    while (state == Z_OK && plain.size() <= limit) {
        const std::size_t used = plain.size();
        plain.resize(used + kChunk);
        stream.next_out = reinterpret_cast<Bytef*>(plain.data() + used);
        stream.avail_out = kChunk;
        state = ::inflate(&stream, Z_NO_FLUSH);
        plain.resize(plain.size() - stream.avail_out);
    }
    inflateEnd(&stream);
    if (state != Z_STREAM_END || plain.size() > limit)
        return std::nullopt;
    return plain;
}

std::string deflate(std::string_view plain)
{
    uLongf size = compressBound(plain.size());
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size,
             reinterpret_cast<const Bytef*>(plain.data()), plain.size());
    packed.resize(size);
    return packed;
}

} // namespace codecs
