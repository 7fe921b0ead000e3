// Reads and writes recipes in both forms, and turns written values into those handed over.
#include "plugin/Recipe.h"

#include "platform/foundation/Json.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace plugin {

using foundation::Array;
using foundation::ArrayRef;
using foundation::DictionaryRef;
using foundation::Error;
using foundation::Number;

namespace {

bool isReserved(std::string_view word)
{
    return word == "blend" || word == "opacity" || word == "mask";
}

// Words about the step itself, in the place of parameters.
bool isStepWord(std::string_view word)
{
    return word == "seed" || word == "defaults" || isReserved(word);
}

std::string inQuotes(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

// ---- Text form
// -------------------------------------------------------------------------------------

std::string place(std::size_t line, std::size_t column)
{
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": ";
}

struct Word {
    std::string text;
    std::size_t line = 1, column = 1;

    std::string where() const { return place(line, column); }
};

// Splits text into lines of words as a shell does: blanks part words, '…' keeps everything, "…"
// everything but \ before \, ", $ and `, \ keeps the next character or joins lines, # at the start
// of a word begins a comment.
class Scanner {
public:
    explicit Scanner(std::string_view text) : _text(text)
    {
        if (_text.starts_with("\xef\xbb\xbf"))
            _text.remove_prefix(3);
    }

    bool atEnd() const { return _at == _text.size(); }

    // The words of the next line; none for a blank one.
    Result<std::vector<Word>> nextLine()
    {
        std::vector<Word> words;
        for (;;) {
            while (!atEnd() && (isBlank(_text[_at]) || joinsLines()))
                advance(joinsLines() ? 2 : 1);
            if (atEnd())
                return words;
            if (_text[_at] == '#') {
                while (!atEnd() && _text[_at] != '\n')
                    advance(1);
                continue;
            }
            if (_text[_at] == '\n') {
                advance(1);
                return words;
            }
            Word word{"", _line, _column};
            if (const char* missing = readWord(word.text))
                return Error{word.where() + "the closing " + missing + " is missing"};
            words.push_back(std::move(word));
        }
    }

private:
    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
    bool joinsLines() const { return _text.substr(_at).starts_with("\\\n"); }

    void advance(std::size_t count)
    {
        for (; count > 0; --count, ++_at) {
            if (_text[_at] == '\n') {
                ++_line;
                _column = 1;
            } else {
                ++_column;
            }
        }
    }

    // The quote that is missing at the end, null if all is well.
    const char* readWord(std::string& word)
    {
        while (!atEnd() && !isBlank(_text[_at]) && _text[_at] != '\n') {
            const char c = _text[_at];
            if (joinsLines()) {
                advance(2);
            } else if (c == '\\' && _at + 1 < _text.size()) {
                word += _text[_at + 1];
                advance(2);
            } else if (c == '\'' || c == '"') {
                advance(1);
                if (!readQuoted(word, c))
                    return c == '"' ? "\"" : "'";
            } else {
                word += c;
                advance(1);
            }
        }
        return nullptr;
    }

    bool readQuoted(std::string& word, char quote)
    {
        while (!atEnd() && _text[_at] != quote) {
            const bool escapes = quote == '"' && _text[_at] == '\\' && _at + 1 < _text.size() &&
                                 std::string_view("\\\"$`").contains(_text[_at + 1]);
            if (escapes)
                advance(1);
            word += _text[_at];
            advance(1);
        }
        if (atEnd())
            return false;
        advance(1);
        return true;
    }

    std::string_view _text;
    std::size_t _at = 0, _line = 1, _column = 1;
};

// One of the words that are about the step itself; nothing when the word is a parameter's key. The
// error has no place yet.
std::optional<foundation::Status> takeStepWord(RecipeStep& step, std::string_view key,
                                               std::string_view text)
{
    if (isReserved(key))
        return Error{inQuotes(key) + " is not supported yet; leave it out"};
    if (key == "seed") {
        const auto n = numberFrom(text);
        if (!n || n->isReal() || n->int64Value() < 0 || n->int64Value() > 0xffff'ffff)
            return Error{"seed takes a whole number from 0 to 4294967295, not " + inQuotes(text)};
        step.seed = static_cast<std::uint32_t>(n->int64Value());
        return foundation::Done{};
    }
    if (key == "defaults") {
        if (text != "true" && text != "false")
            return Error{"defaults takes true or false, not " + inQuotes(text)};
        step.withStartingValues = text == "true";
        return foundation::Done{};
    }
    return std::nullopt;
}

Result<RecipeStep> stepFromWords(const std::vector<Word>& words)
{
    RecipeStep step;
    step.identifier = words.front().text;
    if (step.identifier.empty() || step.identifier.contains('='))
        return Error{words.front().where() +
                     "a step begins with the name of a filter or generator"};
    for (const Word& word : std::span(words).subspan(1)) {
        Result<std::pair<std::string, std::string>> assignment = splitAssignment(word.text);
        if (!assignment)
            return Error{word.where() + assignment.error()};
        const auto& [key, text] = *assignment;
        if (const auto status = takeStepWord(step, key, text)) {
            if (!*status)
                return Error{word.where() + status->error()};
            continue;
        }
        if (step.find(key))
            return Error{word.where() + key + " is set twice"};
        step.setValue(key, text);
    }
    return step;
}

Result<Recipe> recipeFromText(std::string_view text)
{
    Recipe recipe;
    Scanner scanner(text);
    while (!scanner.atEnd()) {
        const Result<std::vector<Word>> words = scanner.nextLine();
        if (!words)
            return Error{words.error()};
        if (words->empty())
            continue;
        Result<RecipeStep> step = stepFromWords(*words);
        if (!step)
            return Error{step.error()};
        recipe.push_back(*std::move(step));
    }
    return recipe;
}

// ---- JSON form
// -------------------------------------------------------------------------------------

std::optional<std::string> textOfJsonNumber(const Value& value)
{
    const Number* n = value.number();
    if (!n || n->kind() == Number::Kind::Boolean)
        return std::nullopt;
    return writtenForm(*n);
}

// The written form of a JSON value; nothing for null, objects and lists of anything but numbers.
std::optional<std::string> textOfJson(const Value& value)
{
    if (const std::string* s = value.string())
        return *s;
    if (value.number())
        return writtenForm(value);
    const ArrayRef list = value.array();
    if (!list || list->size() < 2)
        return std::nullopt;
    std::string s;
    for (const Value& v : *list) {
        const auto n = textOfJsonNumber(v);
        if (!n)
            return std::nullopt;
        s += (s.empty() ? "" : ",") + *n;
    }
    return s;
}

// A number or boolean when that comes back as the very same text; nothing otherwise.
std::optional<Value> plainJsonOf(std::string_view text)
{
    if (text == "true" || text == "false")
        return Value(text == "true");
    const auto n = numberFrom(text);
    if (n && std::isfinite(n->doubleValue()) && writtenForm(*n) == text)
        return Value(*n);
    return std::nullopt;
}

Value jsonOfText(std::string_view text)
{
    if (auto plain = plainJsonOf(text))
        return *std::move(plain);
    Array list;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        const auto number = plainJsonOf(text.substr(start, comma - start));
        if (!number || number->number()->kind() == Number::Kind::Boolean)
            return text;
        list.push_back(*number);
        start = comma + 1;
    }
    return list;
}

Result<RecipeStep> stepFromJson(const Value& value)
{
    const DictionaryRef object = value.dictionary();
    if (!object)
        return Error{"is no object {\"id\": …, \"set\": {…}}"};
    RecipeStep step;
    for (const auto& [key, v] : *object) {
        if (key == "version")
            continue;
        if (key == "id") {
            step.identifier = object->stringValue(key);
            continue;
        }
        if (key != "set") {
            const auto text = textOfJson(v);
            const auto status = takeStepWord(step, key, text ? *text : std::string("null"));
            if (!status)
                return Error{"has an unknown member " + inQuotes(key) +
                             "; parameters belong into \"set\""};
            if (!*status)
                return Error{status->error()};
            continue;
        }
        const DictionaryRef set = v.dictionary();
        if (!set)
            return Error{"has a \"set\" that is no object"};
        for (const auto& [parameter, given] : *set) {
            const auto text = textOfJson(given);
            if (isStepWord(parameter))
                return Error{"sets " + inQuotes(parameter) + ", which belongs beside \"set\""};
            if (!text || parameter.empty() || parameter.contains('='))
                return Error{"sets " + inQuotes(parameter) + " to " + given.kindName() +
                             "; a value is a number, true or false, a text or a list of numbers"};
            step.setValue(parameter, *text);
        }
    }
    if (step.identifier.empty() || step.identifier.contains('='))
        return Error{"has no \"id\", the name of a filter or generator"};
    return step;
}

Result<Recipe> recipeFromJson(std::string_view text)
{
    const Result<Value> json = foundation::parseJson(text);
    if (!json)
        return Error{json.error()};
    Recipe recipe;
    for (const Value& value : *json->array()) {
        Result<RecipeStep> step = stepFromJson(value);
        if (!step)
            return Error{"step " + std::to_string(recipe.size() + 1) + ": " + step.error()};
        recipe.push_back(*std::move(step));
    }
    return recipe;
}

// Empty when a step may set the key.
std::string whyNotSettable(const Entry& entry, const Parameter* p, std::string_view key)
{
    if (key == "GLIFRandomSeed")
        return "GLIFRandomSeed is set by the seed alone";
    if (key == "inputImage")
        return "inputImage is the picture that is worked on";
    if (p)
        return {};
    std::string known;
    for (const Parameter& other : entry.parameters)
        if (other.key != "inputImage")
            known += (known.empty() ? "" : ", ") + other.key;
    return entry.identifier + " has no " + inQuotes(key) +
           (known.empty() ? "; it takes no values" : "; it takes " + known);
}

} // namespace

// ---------------------------------------------------------------------------------------------------

const std::string* RecipeStep::find(std::string_view key) const
{
    const auto found = std::ranges::find(set, key, &std::pair<std::string, std::string>::first);
    return found == set.end() ? nullptr : &found->second;
}

void RecipeStep::setValue(std::string_view key, std::string_view text)
{
    for (auto& [present, value] : set) {
        if (present == key) {
            value = text;
            return;
        }
    }
    set.emplace_back(key, text);
}

Result<Recipe> parseRecipe(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    const bool isJson = first != std::string_view::npos && text[first] == '[';
    Result<Recipe> recipe = isJson ? recipeFromJson(text) : recipeFromText(text);
    if (recipe && recipe->empty())
        return Error{"the recipe has no steps"};
    return recipe;
}

std::string recipeText(const Recipe& recipe)
{
    std::string text;
    for (const RecipeStep& step : recipe) {
        text += shellQuoted(step.identifier);
        for (const auto& [key, value] : step.set)
            text += ' ' + shellQuoted(key + '=' + value);
        if (step.seed)
            text += " seed=" + std::to_string(*step.seed);
        if (!step.withStartingValues)
            text += " defaults=false";
        text += '\n';
    }
    return text;
}

std::string recipeJson(const Recipe& recipe, std::string_view version)
{
    Array steps;
    for (const RecipeStep& step : recipe) {
        Dictionary set;
        for (const auto& [key, text] : step.set)
            set.set(key, jsonOfText(text));
        Dictionary object{{"id", step.identifier}, {"set", std::move(set)}};
        if (step.seed)
            object.set("seed", *step.seed);
        if (!step.withStartingValues)
            object.set("defaults", false);
        if (!version.empty())
            object.set("version", version);
        steps.push_back(std::move(object));
    }
    return foundation::toJson(steps);
}

std::string shellQuoted(const std::string& word)
{
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                        "0123456789_-+=.,:/@%#";
    if (!word.empty() && word.front() != '#' && word.find_first_not_of(kPlain) == std::string::npos)
        return word;
    std::string s = "'";
    for (const char c : word) {
        if (c == '\'')
            s += "'\\''";
        else
            s += c;
    }
    return s + '\'';
}

Result<std::pair<std::string, std::string>> splitAssignment(std::string_view word)
{
    const std::size_t equals = word.find('=');
    if (equals == std::string_view::npos || equals == 0)
        return Error{inQuotes(word) + " is not of the form KEY=VALUE"};
    return std::pair(std::string(word.substr(0, equals)), std::string(word.substr(equals + 1)));
}

std::expected<PreparedStep, StepError> prepareStep(const CIFMain& main, const Entry& entry,
                                                   const RecipeStep& step, Size pictureSize,
                                                   Checking checking)
{
    PreparedStep prepared;
    RecipeStep& asRun = prepared.asRun;
    asRun.identifier = step.identifier;
    asRun.withStartingValues = step.withStartingValues;

    for (const Parameter& p : entry.parameters) {
        if (!step.withStartingValues || step.find(p.key) || step.find(p.handedKey))
            continue;
        const Result<Value> value = startingValue(main, p, pictureSize);
        if (!value)
            return std::unexpected(StepError{value.error(), true});
        if (value->isNothing())
            continue;
        prepared.attributes.set(p.handedKey, *value);
        if (value->picture())
            asRun.setValue(p.key, libraryNames(main, p.kind).front());
        else if (p.kind != ValueKind::Point)
            asRun.setValue(p.key, writtenForm(*value, p.kind).value_or(""));
    }
    for (const auto& [key, text] : step.set) {
        const Parameter* p = entry.find(key);
        if (isStepWord(key))
            return std::unexpected(
                StepError{inQuotes(key) + " is no parameter but about the step"});
        if (checking == Checking::Strict)
            if (const std::string why = whyNotSettable(entry, p, key); !why.empty())
                return std::unexpected(StepError{why});
        Result<Value> value = p ? valueOf(main, *p, text, checking) : valueByLooks(text);
        if (!value)
            return std::unexpected(StepError{value.error(), isPicture(p->kind) && !text.empty()});
        prepared.attributes.set(p ? p->handedKey : key, *std::move(value));
        asRun.setValue(key, text);
    }
    if (entry.isGenerator) {
        asRun.seed = step.seed.value_or(0);
        prepared.attributes.set("GLIFRandomSeed", *asRun.seed);
    }
    return prepared;
}

} // namespace plugin
