// Which controls the page of each generator has, and the parameters they are bound to.
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace editor {

// A slider, a number field and a stepper, called after the stem: _plasmaSmoothSlider,
// _plasmaSmoothTextField, _plasmaSmoothStepper.
struct GeneratorRow {
    const char* stem = nullptr;
    const char* key = nullptr;
    const char* textField = "TextField";
};

struct GeneratorPage {
    std::string_view generator;
    std::array<GeneratorRow, 4> rows = {};
    const char* popUp = nullptr;
    const char* popUpKey = nullptr;
};

std::span<const GeneratorPage> generatorPages();
// Null for a generator without a page of its own.
const GeneratorPage* generatorPage(std::string_view generator);

} // namespace editor
