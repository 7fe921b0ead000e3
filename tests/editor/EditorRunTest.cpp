// The modal runs of the editor window, from the start call to what the host is handed back.
#include "tests/editor/EditorRun.h"

#include "editor/CIFImageInfoController.h"
#include "editor/PictureScrollView.h"
#include "editor/Preferences.h"
#include "plugin/Resizing.h"

using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Point;
using foundation::Rect;
using foundation::Size;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

PictureRef plainPicture(int width, int height, support::Rgba color = {0.8f, 0.2f, 0.1f, 1})
{
    return drawing::Picture::fromBitmap(
        support::converted(*support::bitmapFrom(width, height, [=](int, int) { return color; }),
                           imaging::PixelFormat::Rgba8));
}

constexpr const char* kNoForm = "Failed to load ImageEditor.nib";

} // namespace

TEST_F(EditorRun, BeginsWithTheWholePictureAndAnEntryThatOnlySelects)
{
    const PictureRef picture = photo();
    EXPECT_TRUE(edit(picture, [&] {
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(window().windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(controller.filterName(), "Crop");
        EXPECT_EQ(controller.editMode(), 0);
        EXPECT_EQ(controller.selectedTab(), "filters");
        EXPECT_EQ(view().picture(), picture);
        EXPECT_EQ(view().original(), picture);
        EXPECT_EQ(view().pickPoint(), (Point{48, 32}));
        EXPECT_EQ(parts().m_URLField->toPlainText(), "Powered by Lumigrove");
        EXPECT_FALSE(controller.isSelected());
        EXPECT_FALSE(controller.isWaiting());
        accept();
    }));
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(controller.outputImage(), picture);
    EXPECT_FALSE(controller.isSelected());
    EXPECT_THAT(controller.record().steps, IsEmpty());
    // What belongs to the host is let go of.
    EXPECT_EQ(view().picture(), nullptr);
    EXPECT_EQ(view().original(), nullptr);
    EXPECT_EQ(controller.picture(), nullptr);
}

TEST_F(EditorRun, HandsBackTheSelection)
{
    const Rect given = {10, 20, 30, 25}, changed = {5, 6, 70, 8};
    EXPECT_TRUE(edit(photo(), given, [&] { accept(); }));
    EXPECT_TRUE(controller.isSelected());
    EXPECT_EQ(controller.getSelectedRect(), given);
    EXPECT_EQ(controller.record().crop, given);

    EXPECT_TRUE(edit(photo(), given, [&] {
        view().setSelection(changed);
        // The selection outlives a look at an entry that takes none.
        choose("CIColorInvert");
        choose("Crop");
        EXPECT_EQ(view().getSelection(), changed);
        accept();
    }));
    EXPECT_EQ(controller.getSelectedRect(), changed);

    // The next run begins without.
    EXPECT_TRUE(edit(photo(), [&] { accept(); }));
    EXPECT_FALSE(controller.isSelected());
    EXPECT_EQ(controller.record().crop, std::nullopt);
}

TEST_F(EditorRun, HandsBackTheEffectThatIsShown)
{
    const PictureRef picture = photo();
    Dictionary handed;
    EXPECT_TRUE(edit(picture, [&] {
        choose("CITwirlDistortion");
        EXPECT_EQ(controller.editMode(), 1);
        EXPECT_EQ(*controller.attributes()["CIFinputCenter"].get<Point>(), (Point{48, 32}));
        EXPECT_EQ(view().picture(), controller.outputImage());
        EXPECT_EQ(view().centerHandle(), (Point{48, 32}));
        // Clicking once more where the centre is applies nothing again, and neither does accepting.
        const auto clickAtQuarter = [&] {
            QTest::mouseClick(&view(), Qt::LeftButton, {},
                              view().widgetFromPicture(Point{24, 16}).toPoint());
            waitForResult();
        };
        clickAtQuarter();
        const int results = controller.runner().counters().results;
        EXPECT_EQ(results, 2);
        handed = controller.attributes();
        clickAtQuarter();
        controller.applyCurrentFilter();
        // Beside the picture it is the border that is meant, in the record too.
        view().mouseDown({24, -30});
        view().mouseUp();
        EXPECT_EQ(controller.attributes()["CIFinputCenter"].get<Point>()->y, 0);
        clickAtQuarter();
        accept();
        EXPECT_EQ(controller.runner().counters().results, results);
    }));
    EXPECT_NEAR(handed["CIFinputCenter"].get<Point>()->x, 24, 1);
    EXPECT_EQ(handed.intValue("GLIFRandomSeed", -1), 0);
    EXPECT_TRUE(same(controller.outputImage(), applied("CITwirlDistortion", handed, picture)));
    EXPECT_THAT(controller.record().steps, SizeIs(1));
}

TEST_F(EditorRun, EndsWithoutAResultWhenItIsCancelledOrClosed)
{
    const PictureRef picture = photo();
    const std::function<void()> ways[] = {
        [&] { cancel(); },
        [&] {
            leave();
            window().close();
        },
    };
    for (const auto& way : ways) {
        EXPECT_FALSE(edit(picture, [&] {
            EXPECT_EQ(controller.outputImage(), picture);
            EXPECT_EQ(controller.filterName(), "Crop");
            choose("CIColorInvert");
            way();
        }));
        EXPECT_FALSE(window().isVisible());
        // The last preview can still be asked for.
        EXPECT_FALSE(same(controller.outputImage(), picture));
    }
}

TEST_F(EditorRun, EndsWhenTheApplicationQuitsAndIsNoReasonForItToQuit)
{
    bool accepted = true, goesOn = false;
    QTimer::singleShot(0, &controller, [&] {
        EXPECT_FALSE(edit(photo(), [&] { cancel(); }));
        // Its last window closed.
        QTimer::singleShot(0, &controller, [&] {
            goesOn = true;
            accepted = edit(photo(), [&] {
                leave();
                QCoreApplication::quit();
            });
        });
    });
    QApplication::exec();
    EXPECT_TRUE(goesOn);
    EXPECT_FALSE(accepted);
    EXPECT_FALSE(window().isVisible());
    // A loop of an application that is about to go never begins.
    EXPECT_TRUE(edit(photo(), [&] { accept(); }));
}

TEST_F(EditorRun, AcceptingWaitsForTheResultOnItsWay)
{
    Gate gate;
    const PictureRef picture = gate.picture();
    Dictionary attributes;
    EXPECT_TRUE(edit(picture, [&] {
        controller.chooseEntry("CIColorInvert");
        attributes = controller.attributes();
        EXPECT_TRUE(controller.isWaiting());
        accept();
        EXPECT_TRUE(window().isVisible());
        EXPECT_TRUE(parts()._busyView->isVisible());
        EXPECT_TRUE(parts()._buttonCancel->isEnabled());
        EXPECT_TRUE(parts()._stopButton->isEnabled());
        for (const QWidget* held : std::initializer_list<const QWidget*>{
                 parts()._buttonSet, parts()._tableView, parts()._applyButton, &view()})
            EXPECT_FALSE(held->isEnabled()) << held->objectName().toStdString();
        EXPECT_FALSE(QTest::qWaitFor([&] { return !window().isVisible(); }, 50));
        gate.open();
    }));
    EXPECT_TRUE(same(controller.outputImage(), applied("CIColorInvert", attributes, photo())));
    EXPECT_EQ(controller.runner().counters().results, 1);
    // Nothing of the waiting is left in the next run.
    EXPECT_FALSE(edit(photo(), [&] { EXPECT_TRUE(parts()._tableView->isEnabled()); }));
}

TEST_F(EditorRun, AStoppedResultIsBegunAgainWhenItIsAcceptedOrLeftWithoutWaiting)
{
    const PictureRef picture = photo();
    for (const bool accepts : {false, true}) {
        Gate gate;
        const PictureRef gated = gate.picture();
        const bool accepted = edit(gated, [&] {
            controller.chooseEntry("CIColorInvert");
            accept();
            if (!accepts)
                return cancel();
            controller.runner().stop();
            waitForResult();
            EXPECT_TRUE(window().isVisible());
            EXPECT_TRUE(parts()._tableView->isEnabled());
            EXPECT_EQ(controller.outputImage(), gated);
            gate.open();
            accept();
        });
        EXPECT_EQ(accepted, accepts);
        EXPECT_FALSE(controller.isWaiting() || controller.runner().isBusy());
    }
    EXPECT_TRUE(same(controller.outputImage(), applied("CIColorInvert", {}, picture)));
}

TEST_F(EditorRun, SelectingTakesThePictureAsItIsAtOnce)
{
    Gate gate;
    const PictureRef picture = gate.picture();
    EXPECT_TRUE(edit(picture, [&] {
        controller.chooseEntry("CIColorInvert");
        EXPECT_TRUE(controller.isWaiting());
        controller.chooseEntry("Crop");
        EXPECT_FALSE(controller.isWaiting() || controller.runner().isBusy());
        accept();
    }));
    EXPECT_EQ(controller.outputImage(), picture);
    EXPECT_THAT(controller.record().steps, IsEmpty());
}

TEST_F(EditorRun, IsOneAtATimeAndBlocksTheHostsWindows)
{
    QPushButton host;
    host.show();
    LogLines log;
    EXPECT_TRUE(edit(photo(), [&] {
        EXPECT_EQ(QApplication::activeModalWidget(), &window());
        const PictureRef shown = view().picture();
        EXPECT_FALSE(controller.startEditorUseSelectionWithRect(plainPicture(9, 9), false, {}));
        EXPECT_FALSE(controller.startGeneratorWithRect(nullptr, {0, 0, 9, 9}));
        EXPECT_EQ(view().picture(), shown);
        QSignalSpy clicks(&host, &QAbstractButton::clicked);
        QTest::mouseClick(host.windowHandle(), Qt::LeftButton, {}, {10, 10});
        EXPECT_EQ(clicks.count(), 0);
        accept();
    }));
    EXPECT_THAT(log.lines, ElementsAre("The image editor is open already",
                                       "The image editor is open already"));
}

TEST_F(EditorRun, FitsTheZoomToThePictureAndKeepsWhatThePersonSets)
{
    // A blank of the rectangle's size.
    EXPECT_FALSE(generate(Size{640, 480}, [&] {
        EXPECT_EQ(controller.selectedTab(), "generators");
        EXPECT_EQ(parts()._helpTabView->currentIndex(), 1);
        EXPECT_EQ(controller.picture()->size(), (Size{640, 480}));
        waitForResult();
        EXPECT_EQ(view().picture()->size(), (Size{640, 480}));
        const QSize content = parts()._scrollView->contentSize();
        const double fitted = std::min(0.8 * content.width() / 640, 0.8 * content.height() / 480);
        EXPECT_FLOAT_EQ(view().getScaleFactor(), static_cast<float>(fitted));
        EXPECT_EQ(parts()._scaleSlider->value(), qRound((fitted - 1) * 800));
        EXPECT_EQ(parts()._scaleLabel->text(), QString::number(qRound(fitted * 100)) + "%");

        const std::pair<int, float> scales[] = {{800, 2}, {-800, 0.5f}, {0, 1}, {1600, 3}};
        for (const auto& [slider, scale] : scales) {
            parts()._scaleSlider->setValue(slider);
            EXPECT_FLOAT_EQ(view().getScaleFactor(), scale);
        }
        choose("GLIF_Plasma");
        EXPECT_FLOAT_EQ(view().getScaleFactor(), 3);
    }));

    EXPECT_TRUE(edit(plainPicture(900, 600), [&] {
        const double fitted = double(view().getScaleFactor());
        EXPECT_LT(fitted, 0.8);
        // The slider stands where another scale would put it, until the wheel is turned.
        EXPECT_EQ(parts()._scaleSlider->value(), qRound((fitted - 1) * 800));
        view().scrollWheel(1);
        const double wheeled = double(view().getScaleFactor());
        EXPECT_EQ(parts()._scaleSlider->value(), qRound(-(1 / wheeled - 1) * 800));
        EXPECT_FLOAT_EQ(view().getScaleFactor(), static_cast<float>(wheeled));
        accept();
    }));

    // Two pixels to a point: results have another size than the picture, but the same each time.
    const auto dense = drawing::Picture::fromBitmap(pixelsOf(photo()), Size{48, 32});
    EXPECT_TRUE(edit(dense, [&] {
        choose("CIColorInvert");
        view().setScaleFactor(5);
        controller.chooseEntry("CIFSobel");
        EXPECT_EQ(view().getScaleFactor(), 5);
        waitForResult();
        EXPECT_EQ(view().getScaleFactor(), 5);
        accept();
    }));
}

TEST_F(EditorRun, GeneratesAnewAndBack)
{
    const PictureRef base = plainPicture(80, 60);
    EXPECT_TRUE(generate(base, [&] {
        choose("GLIF_Plasma");
        const auto expectCan = [&](bool undo, bool redo) {
            EXPECT_EQ(parts()._undoButton->isEnabled(), undo);
            EXPECT_EQ(parts()._redoButton->isEnabled(), redo);
        };
        expectCan(false, false);
        const PictureRef first = controller.outputImage();
        click(parts()._generateButton);
        waitForResult();
        const PictureRef second = controller.outputImage();
        const std::uint32_t seed = controller.randomSeed();
        EXPECT_LT(seed, 1'000'000u);
        EXPECT_FALSE(same(first, second));
        expectCan(true, false);

        click(parts()._undoButton);
        waitForResult();
        EXPECT_EQ(controller.randomSeed(), 0u);
        EXPECT_TRUE(same(controller.outputImage(), first));
        expectCan(false, true);

        click(parts()._redoButton);
        waitForResult();
        EXPECT_EQ(controller.randomSeed(), seed);
        EXPECT_TRUE(same(controller.outputImage(), second));

        // After another seed is taken back, a new one leads back to what was seen.
        click(parts()._undoButton);
        controller.generateWithSeed(77);
        controller.undoButton();
        waitForResult();
        EXPECT_EQ(controller.randomSeed(), 0u);
        EXPECT_TRUE(same(controller.outputImage(), first));

        controller.redoButton();
        waitForResult();
        EXPECT_EQ(controller.attributes().intValue("GLIFRandomSeed", -1), 77);
        // From the other list, too.
        choose("CITwirlDistortion");
        controller.undoButton();
        waitForResult();
        EXPECT_EQ(controller.filterName(), "GLIF_Plasma");
        EXPECT_TRUE(same(controller.outputImage(), first));
        controller.redoButton();
        waitForResult();
        const int results = controller.runner().counters().results;
        accept();
        EXPECT_EQ(controller.runner().counters().results, results);
    }));
    EXPECT_TRUE(
        same(controller.outputImage(), applied("GLIF_Plasma", controller.attributes(), base, 77)));
    const plugin::EditRecord record = controller.record();
    ASSERT_THAT(record.steps, SizeIs(1));
    EXPECT_EQ(record.steps[0].applied->identifier, "GLIF_Plasma");
    EXPECT_EQ(record.steps[0].applied->seed, 77u);
    EXPECT_EQ(record.size, (Size{80, 60}));
    // A step of this run is no step of the next.
    EXPECT_FALSE(generate(base, [&] { EXPECT_FALSE(parts()._undoButton->isEnabled()); }));
}

TEST_F(EditorRun, AppliesOnTopOfWhatIsShown)
{
    const PictureRef picture = photo();
    PictureRef inverted;
    EXPECT_TRUE(edit(picture, [&] {
        choose("CIColorInvert");
        inverted = controller.outputImage();
        const int results = controller.runner().counters().results;
        click(parts()._applyButton);
        EXPECT_EQ(controller.picture(), inverted);
        EXPECT_EQ(view().original(), inverted);
        EXPECT_EQ(controller.outputImage(), inverted);
        EXPECT_THAT(controller.record().steps, SizeIs(1));
        click(parts()._applyButton); // nothing more to apply
        EXPECT_THAT(controller.record().steps, SizeIs(1));

        click(parts()._undoButton);
        EXPECT_EQ(controller.picture(), picture);
        EXPECT_EQ(controller.outputImage(), inverted);
        click(parts()._redoButton);
        EXPECT_EQ(controller.picture(), inverted);
        EXPECT_FALSE(controller.isWaiting());
        EXPECT_EQ(controller.runner().counters().results, results);

        choose("CIFSobel");
        // What was applied is what comes back, with the entry that it was.
        click(parts()._undoButton);
        waitForResult();
        EXPECT_EQ(controller.filterName(), "CIColorInvert");
        EXPECT_TRUE(same(controller.outputImage(), inverted));
        click(parts()._redoButton);
        choose("CIFSobel");
        accept();
    }));
    EXPECT_TRUE(
        same(controller.outputImage(), applied("CIFSobel", controller.attributes(), inverted)));
    const plugin::EditRecord record = controller.record();
    ASSERT_THAT(record.steps, SizeIs(2));
    EXPECT_EQ(record.steps[0].applied->identifier, "CIColorInvert");
    EXPECT_EQ(record.steps[1].applied->identifier, "CIFSobel");
}

// Nothing else can be chosen meanwhile: what is applied is what the button was pressed for.
TEST_F(EditorRun, ApplyingHoldsTheWindowUntilTheResultIsThere)
{
    const PictureRef picture = photo();
    Gate gate;
    EXPECT_TRUE(edit(gate.picture(), [&] {
        controller.chooseEntry("CIColorInvert");
        const int row = parts()._tableView->currentIndex().row();
        click(parts()._applyButton);
        EXPECT_NE(window().focusWidget(), parts()._applyButton);
        click(parts()._applyButton);
        QTest::keyClick(&window(), Qt::Key_Down);
        QTest::keyClick(parts()._tableView, Qt::Key_Down);
        EXPECT_EQ(parts()._tableView->currentIndex().row(), row);
        EXPECT_FALSE(parts()._undoButton->isEnabled());
        gate.open();
        waitForResult();
        EXPECT_EQ(controller.picture(), controller.outputImage());
        EXPECT_THAT(controller.record().steps, SizeIs(1));
        EXPECT_EQ(window().focusWidget(), parts()._applyButton);
        EXPECT_TRUE(parts()._undoButton->isEnabled());
        choose("CIFSobel");
        accept();
    }));
    EXPECT_TRUE(same(controller.outputImage(), applied("CIFSobel", controller.attributes(),
                                                       applied("CIColorInvert", {}, picture))));

    // Stopped, nothing is applied, and the window is free again.
    Gate closed;
    const PictureRef gated = closed.picture();
    EXPECT_FALSE(edit(gated, [&] {
        controller.chooseEntry("CIColorInvert");
        click(parts()._applyButton);
        click(parts()._stopButton);
        waitForResult();
        EXPECT_TRUE(parts()._tableView->isEnabled());
        EXPECT_EQ(controller.picture(), gated);
        closed.open();
        cancel();
    }));
}

// The size sheet of the run: opened by its button, filled in, and left.
class EditorSizes : public EditorRun {
protected:
    QDialog& sheet() { return *CIFImageInfoController::sharedImageInfoTool().window(); }
    void open()
    {
        click(parts()._sizeButton);
        ASSERT_NE(CIFImageInfoController::sharedImageInfoTool().window(), nullptr);
        ASSERT_TRUE(sheet().isVisible());
    }
    void type(const char* width, const char* height)
    {
        // Width first would change the height with it.
        sheet().findChild<QCheckBox*>("_constrainProportionsButton")->setChecked(false);
        const std::pair<const char*, const char*> texts[] = {{"_widthTextField", width},
                                                             {"_heightTextField", height}};
        for (const auto& [name, text] : texts) {
            auto* field = sheet().findChild<QLineEdit*>(name);
            field->selectAll();
            QTest::keyClicks(field, text);
        }
    }
    void press(QDialogButtonBox::StandardButton button)
    {
        click(sheet().findChild<QDialogButtonBox*>()->button(button));
        waitForResult();
    }
    void resize(const char* width, const char* height,
                QDialogButtonBox::StandardButton button = QDialogButtonBox::Ok)
    {
        open();
        type(width, height);
        press(button);
    }
};

TEST_F(EditorSizes, StretchesThePicture)
{
    const PictureRef picture = photo();
    EXPECT_TRUE(edit(picture, Rect{1, 2, 30, 20}, [&] {
        choose("CIColorInvert");
        choose("Crop");
        open();
        EXPECT_TRUE(sheet().findChild<QCheckBox*>("_constrainProportionsButton")->isChecked());
        type("48", "80");
        press(QDialogButtonBox::Ok);
        EXPECT_EQ(view().picture()->size(), (Size{48, 80}));
        EXPECT_FALSE(controller.isSelected());
        // The centre stays the centre.
        EXPECT_EQ(view().pickPoint(), (Point{24, 40}));
        choose("CIColorInvert");
        accept();
    }));
    const auto stretched = drawing::Picture::fromBitmap(picture->bitmapOfSize(48, 80));
    EXPECT_TRUE(same(controller.outputImage(), applied("CIColorInvert", {}, stretched)));
    const plugin::EditRecord record = controller.record();
    ASSERT_THAT(record.steps, SizeIs(1));
    EXPECT_EQ(record.steps[0].resized, (Size{48, 80}));
    EXPECT_EQ(record.steps[0].applied->identifier, "CIColorInvert");
}

// A whole session, and the same steps as a host would take them with the numbers written out.
TEST_F(EditorSizes, BelongToASessionThatEqualsAHostsSteps)
{
    const PictureRef picture = photo();
    const auto typeInto = [&](const char* field, const char* number) {
        EditorRun::type(part<QWidget>(field), number);
        waitForResult();
    };
    EXPECT_TRUE(edit(picture, [&] {
        choose("CIColorControls");
        typeInto("_textField1", "0.5");
        typeInto("_textField2", "0.1");
        typeInto("_textField3", "1.5");
        typeInto("_textField2", "0.25");
        controller.undoButton();
        waitForResult();
        click(parts()._applyButton);
        resize("72", "90");
        choose("CITwirlDistortion");
        view().mouseDown({20, 60});
        view().mouseUp();
        waitForResult();
        typeInto("_textField1", "40");
        typeInto("_textField2", "2");
        click(parts()._applyButton);
        choose("Crop");
        view().mouseDown({10, 15});
        view().mouseDragged({50, 75});
        view().mouseUp();
        accept();
    }));
    EXPECT_TRUE(controller.isSelected());
    EXPECT_EQ(controller.getSelectedRect(), (Rect{10, 15, 40, 60}));

    CIFMain host;
    const PictureRef toned = host.CIFApplyFilterAttributesForImage(
        "CIColorControls",
        {{"inputSaturation", 0.5f}, {"inputBrightness", 0.1f}, {"inputContrast", 1.5f}}, picture);
    const auto smaller = plugin::resized(toned, 72, 90, false);
    ASSERT_TRUE(smaller);
    const PictureRef turned = host.CIFApplyFilterAttributesForImage(
        "CITwirlDistortion",
        {{"CIFinputCenter", Point{20, 60}}, {"inputRadius", 40.0f}, {"inputAngle", 2.0f}},
        *smaller);
    EXPECT_TRUE(same(controller.outputImage(), turned));
}

TEST_F(EditorSizes, FitsAThumbnailOnWhite)
{
    const support::Rgba red = {0.8f, 0.2f, 0.1f, 1}, white = {1, 1, 1, 1};
    for (const imaging::PixelFormat format :
         {imaging::PixelFormat::Rgba8, imaging::PixelFormat::Rgba16}) {
        const PictureRef picture = drawing::Picture::fromBitmap(support::converted(
            *support::bitmapFrom(200, 100, [=](int, int) { return red; }), format));
        EXPECT_TRUE(edit(picture, [&] {
            open();
            click(sheet().findChild<QCheckBox*>("_makeThumbnailButton"));
            type("100", "100");
            press(QDialogButtonBox::Ok);
            accept();
        }));
        const auto pixels = pixelsOf(controller.outputImage());
        EXPECT_EQ(pixels->format(), format);
        ASSERT_EQ(pixels->width(), 100);
        for (const auto& [y, color] : {std::pair(24, white), {25, red}, {74, red}, {75, white}})
            for (const int x : {0, 99}) {
                EXPECT_NEAR(support::pixel(*pixels, x, y).g, color.g, 0.002) << x << ", " << y;
                EXPECT_NEAR(support::pixel(*pixels, x, y).r, color.r, 0.002) << x << ", " << y;
            }
        EXPECT_TRUE(controller.record().steps.at(0).asThumbnail);
    }
}

TEST_F(EditorSizes, GivesAGeneratorAnotherBlank)
{
    EXPECT_TRUE(generate(Size{64, 48}, [&] {
        choose("GLIF_Plasma");
        controller.generateWithSeed(5);
        waitForResult();
        open();
        EXPECT_FALSE(sheet().findChild<QCheckBox*>("_makeThumbnailButton")->isEnabled());
        EXPECT_FALSE(sheet().findChild<QCheckBox*>("_constrainProportionsButton")->isChecked());
        const float before = view().getScaleFactor();
        type("100", "30");
        press(QDialogButtonBox::Ok);
        EXPECT_EQ(view().picture()->size(), (Size{100, 30}));
        EXPECT_NE(view().getScaleFactor(), before);

        // Cancelling answers what the fields show, too; the same size is no change.
        const int results = controller.runner().counters().results;
        open();
        press(QDialogButtonBox::Cancel);
        EXPECT_EQ(controller.runner().counters().results, results);
        resize("90", "60", QDialogButtonBox::Cancel);
        EXPECT_EQ(view().picture()->size(), (Size{90, 60}));
        click(parts()._undoButton);
        waitForResult();
        EXPECT_EQ(view().picture()->size(), (Size{100, 30}));
        accept();
    }));
    const PictureRef blank = drawing::Picture::blank({100, 30});
    EXPECT_TRUE(
        same(controller.outputImage(), applied("GLIF_Plasma", controller.attributes(), blank, 5)));
    EXPECT_EQ(controller.record().size, (Size{100, 30}));
}

TEST_F(EditorSizes, SaysSoWhenThereCanBeNoSuchPicture)
{
    LogLines log;
    const PictureRef picture = photo();
    for (const bool generates : {false, true}) {
        log.lines.clear();
        const auto script = [&] {
            waitForResult();
            const PictureRef shown = view().picture();
            resize("100000", "100000");
            EXPECT_THAT(log.lines, SizeIs(1));
            EXPECT_FALSE(parts()._statusLabel->text().isEmpty());
            EXPECT_EQ(controller.picture(), picture);
            EXPECT_EQ(view().picture(), shown);
            accept();
        };
        EXPECT_TRUE(generates ? generate(picture, script) : edit(picture, script));
    }
    log.lines.clear();
    EXPECT_FALSE(generate(Size{100000, 100000}, [] {}));
    EXPECT_FALSE(generate(Size{-5, 1e30}, [] {}));
    EXPECT_THAT(log.lines, SizeIs(2));
}

TEST_F(EditorSizes, ClosesTheSheetWithTheRun)
{
    const PictureRef picture = photo();
    EXPECT_FALSE(edit(picture, [&] {
        open();
        type("10", "10");
    }));
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(controller.outputImage(), picture);
}

TEST_F(EditorRun, SaysWhatIsMissing)
{
    const TemporaryFolder nothing;
    const Variable content("CIF_CONTENT_LIBRARY", nothing.path().string());
    LogLines log;
    EXPECT_TRUE(edit(nullptr, [&] {
        controller.applyButton();
        EXPECT_THAT(log.lines, ElementsAre("no image to apply"));
        accept();
    }));
    EXPECT_EQ(controller.outputImage(), nullptr);

    log.lines.clear();
    EXPECT_TRUE(edit(photo(), [&] {
        choose("CIColorInvert");
        const PictureRef shown = view().picture();
        choose("CIGlassDistortion");
        choose("CIFShadingFilter");
        EXPECT_THAT(log.lines,
                    ElementsAre("can't locate glass texture", "can't locate shading material"));
        EXPECT_EQ(view().picture(), shown);
        EXPECT_FALSE(parts()._statusLabel->text().isEmpty());
        EXPECT_EQ(controller.record().steps.at(0).applied->identifier, "CIColorInvert");
        EXPECT_EQ(parts()._texturePopUpButton10->count(), 1); // "Other..."
        EXPECT_EQ(parts()._texturePopUpButton20->count(), 0);
        accept();
    }));
}

TEST_F(EditorRun, NeedsItsForm)
{
    const TemporaryFolder folder;
    LogLines log;
    {
        const Variable resources("CIF_RESOURCES", folder.path().string());
        EXPECT_FALSE(edit(photo(), [] {}));
        folder.write("forms/ImageEditor.ui", "<ui version=\"4.0\"><widget class=");
        EXPECT_FALSE(generate(Size{10, 10}, [] {}));
        folder.write("forms/ImageEditor.ui",
                     "<ui version=\"4.0\"><widget class=\"QMainWindow\" name=\"A\"/></ui>");
        EXPECT_FALSE(edit(photo(), [] {}));
    }
    EXPECT_THAT(log.lines, ElementsAre(kNoForm, kNoForm, kNoForm));
    EXPECT_EQ(controller.window(), nullptr);
    // It is looked for again.
    EXPECT_TRUE(edit(photo(), [&] { accept(); }));
}

TEST_F(EditorRun, HasNeitherListsNorMenusOnAnOlderPlatform)
{
    const Variable version("CIF_TOOLKIT_VERSION", "823.9");
    EXPECT_TRUE(edit(photo(), [&] {
        EXPECT_EQ(controller.plugIn(), nullptr);
        EXPECT_EQ(parts()._tableView->model() ? parts()._tableView->model()->rowCount() : 0, 0);
        EXPECT_EQ(parts()._texturePopUpButton10->count(), 0);
        accept();
    }));
    EXPECT_FALSE(generate(Size{20, 10}, [&] { click(parts()._generateButton); }));
}

TEST_F(EditorRun, RemembersItsFrameAndDivider)
{
    QList<int> sizes;
    QSize size;
    EXPECT_FALSE(edit(photo(), [&] {
        window().resize(window().width() + 50, window().height() - 20);
        size = window().size();
        sizes = parts()._splitter->sizes();
        sizes[0] += 30;
        sizes[1] -= 30;
        parts()._splitter->setSizes(sizes);
        sizes = parts()._splitter->sizes();
    }));
    CIFImageEditorController later;
    QTimer::singleShot(0, &later, [&] {
        EXPECT_EQ(later.window()->size(), size);
        EXPECT_EQ(later.outlets()._splitter->sizes(), sizes);
        later.windowShouldClose();
    });
    EXPECT_FALSE(later.startEditorUseSelectionWithRect(photo(), false, {}));
    editor::Preferences().clear();
}

// Files and memory are counted where a host opens the window two hundred times.
TEST_F(EditorRun, LeavesNothingBehind)
{
    std::vector<std::weak_ptr<const drawing::Picture>> pictures;
    const auto openOnce = [&](int i) {
        const bool generates = i % 4 == 3;
        const PictureRef picture = plainPicture(64 + i % 3, 48);
        pictures.push_back(picture);
        const auto script = [&] {
            choose(generates ? "GLIF_ColourBars" : "CIColorInvert");
            if (i % 2) {
                click(parts()._applyButton);
                if (generates)
                    controller.generateWithSeed(static_cast<std::uint32_t>(i));
                waitForResult();
            }
            pictures.push_back(controller.picture());
            accept();
        };
        EXPECT_TRUE(generates ? generate(picture, script) : edit(picture, script));
    };
    const auto objectsAfter = [&](int openings) {
        for (int i = 0; i < openings; ++i)
            openOnce(i);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window().findChildren<QObject*>().size() + QApplication::topLevelWidgets().size() +
               controller.findChildren<QObject*>().size();
    };
    const auto before = objectsAfter(8);
    EXPECT_EQ(objectsAfter(24), before);
    // All are gone but what the last run handed back.
    const auto isThere = [](const auto& picture) { return !picture.expired(); };
    const auto left = [&] { return std::count_if(pictures.begin(), pictures.end(), isThere); };
    waitFor([&] { return left() <= 1; });
    EXPECT_LE(left(), 1);
}
