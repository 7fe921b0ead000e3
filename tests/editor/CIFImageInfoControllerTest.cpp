// The size sheet: its arithmetic as people type, what OK and Cancel answer, both ways of opening.
#include "editor/CIFImageInfoController.h"

#include "editor/Preferences.h"
#include "platform/foundation/Bundle.h"
#include "tests/plugin/Environment.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include <limits>

namespace {

using foundation::Size;
using testing::ElementsAre;

enum Unit { Pixels, Percent };

class SizeSheet : public testing::Test {
protected:
    bool open(Size size, bool constrain = true, bool thumbnail = false, bool disableFit = false)
    {
        return tool
            .sheetChangeSizeConstrainProportionsMakeThumbnailDisableFitToSizeModalDelegateDidEndSelector(
                size, constrain, thumbnail, disableFit, &host,
                [this](QWidget* sheet, int code, void* context) {
                    EXPECT_EQ(sheet, tool.window());
                    EXPECT_EQ(context, nullptr);
                    EXPECT_FALSE(sheet->isVisible());
                    codes.push_back(code);
                });
    }

    template <class T>
    T& part(const char* name)
    {
        T* found = tool.window()->findChild<T*>(QLatin1String(name));
        if (!found)
            throw std::runtime_error(std::string("the form has no ") + name);
        return *found;
    }
    QLineEdit& width() { return part<QLineEdit>("_widthTextField"); }
    QLineEdit& height() { return part<QLineEdit>("_heightTextField"); }
    QCheckBox& constrain() { return part<QCheckBox>("_constrainProportionsButton"); }
    QCheckBox& thumbnail() { return part<QCheckBox>("_makeThumbnailButton"); }

    static void type(QLineEdit& field, const char* text)
    {
        field.setFocus();
        field.selectAll();
        if (!*text)
            QTest::keyClick(&field, Qt::Key_Delete);
        QTest::keyClicks(&field, text);
    }
    void choose(Unit unit, const char* menu = "_percentPopUpButton")
    {
        QTest::keyClick(&part<QComboBox>(menu), unit == Pixels ? Qt::Key_Home : Qt::Key_End);
    }
    void press(QDialogButtonBox::StandardButton button)
    {
        QTest::mouseClick(tool.window()->findChild<QDialogButtonBox*>()->button(button),
                          Qt::LeftButton);
    }
    // The fields as they are shown.
    std::pair<std::string, std::string> shown()
    {
        return {width().text().toStdString(), height().text().toStdString()};
    }

    QWidget host;
    CIFImageInfoController tool;
    std::vector<int> codes;
};

using Shown = std::pair<std::string, std::string>;

// One number typed into one field.
struct Typing {
    const char* name;
    Size size;
    bool constrain;
    Unit unit;
    bool intoWidth;
    const char* typed;
    Shown shown;
    Size pixels, percent; // as typed so far
    Size answer;          // of OK
};

void PrintTo(const Typing& typing, std::ostream* out)
{
    *out << typing.name;
}

class Typed : public SizeSheet, public testing::WithParamInterface<Typing> {};

// Columns: size on opening, constrained, unit, field, typed; then both fields, the size and the
// percentages as typed so far, the answer of OK.
// clang-format off
const Typing kTypings[] = {
    {"ConstrainedWidth", {640, 480}, true, Pixels, true, "320", {"320", "240"}, {320, 480}, {50, 50}, {320, 240}},
    {"ConstrainedHeight", {640, 480}, true, Pixels, false, "101", {"135", "101"}, {640, 101}, {101 / 4.8, 101 / 4.8}, {135, 101}},
    {"ConstrainedWidthPercent", {640, 480}, true, Percent, true, "50", {"50", "50"}, {320, 240}, {50, 50}, {320, 240}},
    {"FreeWidth", {640, 480}, false, Pixels, true, "320", {"320", "480"}, {320, 480}, {50, 100}, {320, 480}},
    {"FreeWidthPercent", {640, 480}, false, Percent, true, "50", {"50", "100"}, {320, 480}, {50, 100}, {320, 480}},
    {"FractionsSurviveInPercent", {333, 111}, true, Percent, true, "50", {"50", "50"}, {166.5, 55.5}, {50, 50}, {166.5, 55.5}},
    {"FlatPictureKeepsARow", {1000, 2}, true, Pixels, true, "100", {"100", "1"}, {100, 2}, {10, 10}, {100, 1}},
    {"NothingCountsAsOne", {640, 480}, true, Pixels, true, "", {"", "1"}, {1, 480}, {0.15625, 0.15625}, {1, 1}},
    {"ZeroPercentIsOnePixelAtLeast", {40, 400}, true, Percent, true, "0", {"0", "1"}, {0.4, 4}, {1, 1}, {1, 4}},
    {"LargestSide", {640, 480}, false, Pixels, true, "999999", {"999999", "480"}, {100000, 480}, {15625, 100}, {100000, 480}},
    {"LargestOtherSide", {100, 400}, true, Pixels, true, "90000", {"90000", "100000"}, {90000, 400}, {90000, 90000}, {90000, 100000}},
    {"LargestByPercent", {640, 480}, true, Percent, true, "99999", {"99999", "99999"}, {639993.6, 479995.2}, {99999, 99999}, {100000, 100000}},
    {"LettersAreNotTaken", {640, 480}, false, Pixels, true, "3x2-0.", {"320", "480"}, {320, 480}, {50, 100}, {320, 480}},
};
// clang-format on

} // namespace

TEST_P(Typed, IntoOneField)
{
    const Typing& t = GetParam();
    ASSERT_TRUE(open(t.size, t.constrain));
    choose(t.unit);
    type(t.intoWidth ? width() : height(), t.typed);
    EXPECT_EQ(shown(), t.shown);
    EXPECT_EQ(tool.sizeInPixels(), t.pixels);
    EXPECT_NEAR(tool.sizeInPercent().width, t.percent.width, 1e-9);
    EXPECT_NEAR(tool.sizeInPercent().height, t.percent.height, 1e-9);
    press(QDialogButtonBox::Ok);
    EXPECT_THAT(codes, ElementsAre(1));
    EXPECT_EQ(tool.imageSize(), t.answer);
}

INSTANTIATE_TEST_SUITE_P(SizeSheet, Typed, testing::ValuesIn(kTypings),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(SizeSheet, BothUnitMenusAgreeAndConvertTheFields)
{
    ASSERT_TRUE(open({640, 480}));
    type(width(), "333");
    choose(Percent, "_percentPopUpButton2");
    EXPECT_EQ(part<QComboBox>("_percentPopUpButton").currentIndex(), Percent);
    // 52.03125 percent, cut.
    EXPECT_EQ(shown(), Shown("52", "52"));
    choose(Pixels);
    EXPECT_EQ(part<QComboBox>("_percentPopUpButton2").currentIndex(), Pixels);
    // 480 times 52.03125 percent is 249.75, cut this time.
    EXPECT_EQ(shown(), Shown("333", "249"));
}

TEST_F(SizeSheet, AThumbnailFreesTheFields)
{
    ASSERT_TRUE(open({640, 480}, true, true));
    EXPECT_FALSE(constrain().isEnabled());
    type(width(), "100");
    EXPECT_EQ(shown(), Shown("100", "480"));
    EXPECT_EQ(tool.sizeInPixels(), (Size{640, 480}));
    EXPECT_TRUE(tool.isMakeThumbnail());
    QTest::keyClick(&thumbnail(), Qt::Key_Space);
    EXPECT_TRUE(constrain().isEnabled());
    EXPECT_FALSE(tool.isMakeThumbnail());
    type(width(), "320");
    EXPECT_EQ(shown(), Shown("320", "240"));
    QTest::keyClick(&thumbnail(), Qt::Key_Space);
    // The answer outlives the sheet.
    press(QDialogButtonBox::Ok);
    EXPECT_TRUE(tool.isMakeThumbnail());
    EXPECT_EQ(tool.imageSize(), (Size{320, 240}));
}

TEST_F(SizeSheet, CancelStillAnswersWhatTheFieldsShow)
{
    using Way = std::function<void()>;
    const Way ways[] = {[this] { press(QDialogButtonBox::Cancel); },
                        [this] { QTest::keyClick(&width(), Qt::Key_Escape); },
                        [this] { tool.window()->close(); }};
    for (const Way& cancel : ways) {
        codes.clear();
        ASSERT_TRUE(open({640, 480}));
        choose(Percent);
        type(width(), "50");
        cancel();
        EXPECT_THAT(codes, ElementsAre(0));
        EXPECT_FALSE(tool.window()->isVisible());
        EXPECT_EQ(tool.imageSize(), (Size{50, 50}));
        EXPECT_EQ(tool.sizeInPixels(), (Size{50, 50}));
        EXPECT_EQ(tool.sizeInPercent(), (Size{100, 100}));
    }
}

TEST_F(SizeSheet, BlocksItsWindowOnlyAndIsThereOnce)
{
    host.show();
    ASSERT_TRUE(open({640, 480}));
    EXPECT_EQ(tool.window()->windowModality(), Qt::WindowModal);
    EXPECT_FALSE(open({10, 10}));
    EXPECT_EQ(shown(), Shown("640", "480"));
    QTest::keyClick(&width(), Qt::Key_Return);
    EXPECT_THAT(codes, ElementsAre(1));
    // It goes with its window.
    auto window = std::make_unique<QWidget>();
    tool.sheetChangeSizeConstrainProportionsMakeThumbnailDisableFitToSizeModalDelegateDidEndSelector(
        {640, 480}, true, true, false, window.get(), nullptr);
    ASSERT_NE(tool.window(), nullptr);
    window.reset();
    EXPECT_EQ(tool.window(), nullptr);
    EXPECT_TRUE(open({640, 480}));
}

TEST_F(SizeSheet, OpensOnAnySize)
{
    const double none = std::numeric_limits<double>::quiet_NaN();
    const std::pair<Size, Shown> sizes[] = {
        {{0, 0}, {"1", "1"}}, {{none, -3}, {"1", "1"}}, {{1e30, 12.9}, {"100000", "12"}}};
    for (const auto& [size, fields] : sizes) {
        ASSERT_TRUE(open(size));
        EXPECT_EQ(shown(), fields);
        press(QDialogButtonBox::Ok);
    }
}

TEST_F(SizeSheet, RunsAsAWindowOfItsOwn)
{
    const auto run = [&](const std::function<void()>& user) {
        QTimer::singleShot(0, &tool, user);
        return tool.changeSizeConstrainProportionsMakeThumbnailDisableFitToSize({640, 480}, true,
                                                                                false, false);
    };
    EXPECT_TRUE(run([&] {
        EXPECT_EQ(tool.window()->windowModality(), Qt::ApplicationModal);
        type(width(), "320");
        tool.window()->move(70, 80);
        press(QDialogButtonBox::Ok);
    }));
    EXPECT_EQ(tool.imageSize(), (Size{320, 240}));
    EXPECT_TRUE(editor::Preferences().contains("Frames/ImageEditor"));

    // Closing it only ends the run, and takes nothing.
    const std::pair<std::function<void()>, Size> ways[] = {
        {[&] { tool.window()->close(); }, {320, 240}},
        {[&] { press(QDialogButtonBox::Cancel); }, {160, 120}}};
    for (const auto& [end, size] : ways) {
        EXPECT_FALSE(run([&] {
            EXPECT_EQ(tool.window()->pos(), QPoint(70, 80));
            type(height(), "120");
            end();
        }));
        EXPECT_EQ(tool.imageSize(), size);
    }
}

TEST_F(SizeSheet, SaysSoWhenItsFormIsMissingOrDamaged)
{
    const TemporaryFolder folder;
    const Variable resources("CIF_RESOURCES", folder.path().string());
    LogLines log;
    for (const char* form : {"", "<ui version=\"4.0\"><widget class=",
                             "<ui version=\"4.0\"><widget class=\"QDialog\" name=\"A\"/></ui>"}) {
        if (*form)
            folder.write("forms/ImageInfoTool.ui", form);
        log.lines.clear();
        EXPECT_FALSE(open({640, 480}));
        EXPECT_FALSE(tool.changeSizeConstrainProportionsMakeThumbnailDisableFitToSize(
            {640, 480}, true, false, false));
        EXPECT_THAT(log.lines, ElementsAre("Failed to load ImageInfoTool.nib",
                                           "Failed to load ImageInfoTool.nib"));
        EXPECT_EQ(tool.window(), nullptr);
    }
    EXPECT_THAT(codes, ElementsAre());
}

TEST_F(SizeSheet, SpeaksToTheReaderAndToScreenReaders)
{
    foundation::setLanguage("de");
    ASSERT_TRUE(open({640, 480}));
    EXPECT_EQ(tool.window()->windowTitle(), QString::fromUtf8("Bildgröße"));
    EXPECT_EQ(part<QComboBox>("_percentPopUpButton").accessibleName(), "Einheit der Breite");
    EXPECT_EQ(part<QLabel>("widthLabel").buddy(), &width());
    EXPECT_EQ(part<QLabel>("heightLabel").buddy(), &height());
    foundation::setLanguage("C");
}
