// Menus, shortcuts, recipes and presets of the window, driven as a user drives them.
#include "EditorRun.h"

#include "editor/Commands.h"
#include "editor/DecimalControl.h"
#include "editor/Preferences.h"
#include "platform/codecs/Codecs.h"
#include "plugin/Recipe.h"

namespace {

using plugin::RecipeStep;

class EditorCommands : public EditorRun {
protected:
    editor::Commands& commands() { return *controller.commands(); }
    QAction& action(const char* name)
    {
        QAction* found = commands().action(name);
        if (!found)
            throw std::runtime_error(std::string("there is no command ") + name);
        return *found;
    }
    void press(const QKeySequence& keys, QWidget* focused = nullptr)
    {
        QTest::keySequence(focused ? focused : &view(), keys);
    }
    int results() { return controller.runner().counters().results; }
    QString status() { return parts()._statusLabel->text(); }
    // The titles of a menu's items as they are when it is shown.
    static QStringList itemsOf(QMenu& menu)
    {
        Q_EMIT menu.aboutToShow();
        QStringList titles;
        for (const QAction* item : menu.actions())
            titles << item->text();
        return titles;
    }
    static QAction* itemOf(QMenu& menu, const QString& title)
    {
        Q_EMIT menu.aboutToShow();
        for (QAction* item : menu.actions())
            if (item->text() == title)
                return item;
        throw std::runtime_error("the menu has no " + title.toStdString());
    }
    void setSlider(const char* name, double value)
    {
        part<editor::ParameterSlider>(name).changeValue(value);
    }
    static std::string clipboard() { return QGuiApplication::clipboard()->text().toStdString(); }

    // The picture that a recipe's step makes without the window.
    PictureRef madeBy(const RecipeStep& step, const PictureRef& picture)
    {
        CIFMain plugIn;
        const auto entry = plugin::describeEntry(plugIn, step.identifier);
        const auto prepared =
            plugin::prepareStep(plugIn, *entry, step, picture->size(), plugin::Checking::Strict);
        EXPECT_TRUE(prepared) << plugin::recipeText({step}) << prepared.error().text;
        return prepared ? applied(step.identifier, prepared->attributes, picture,
                                  prepared->asRun.seed.value_or(0))
                        : nullptr;
    }
    // What is written down makes what is shown, also after text and back.
    void expectStepMakesWhatIsShown(const PictureRef& picture)
    {
        const auto step = controller.currentStep();
        ASSERT_TRUE(step) << controller.filterName();
        const auto read = plugin::parseRecipe(plugin::recipeText({*step}));
        ASSERT_TRUE(read) << read.error();
        EXPECT_EQ(read->at(0), *step);
        const PictureRef made = madeBy(*step, picture);
        ASSERT_TRUE(made) << plugin::recipeText({*step});
        EXPECT_TRUE(same(made, controller.outputImage())) << plugin::recipeText({*step});
    }
};

// What the controls can reach is valid everywhere else.
TEST_F(EditorCommands, EveryEntryIsWrittenDownAsItIsShown)
{
    const PictureRef picture = photo();
    edit(picture, [&] {
        CIFMain plugIn;
        for (const std::uint32_t set : {0u, 1u})
            for (const std::string& id : entriesOf(set)) {
                choose(id);
                if (id == "Crop")
                    continue;
                expectStepMakesWhatIsShown(picture);
                for (const bool most : {false, true}) {
                    for (auto* slider : window().findChildren<editor::ParameterSlider*>())
                        if (slider->isVisible() && !slider->representedObject.empty())
                            slider->changeValue(most ? slider->maxValue() : slider->minValue());
                    const auto prepared = plugin::prepareStep(
                        plugIn, *plugin::describeEntry(plugIn, id), *controller.currentStep(),
                        {96, 64}, plugin::Checking::Strict);
                    EXPECT_TRUE(prepared) << prepared.error().text;
                }
                controller.runner().stop();
            }
    });
}

TEST_F(EditorCommands, StepsAreTakenAsOneStepOfUndo)
{
    const PictureRef picture = photo();
    // With a centre; a generator, from the other list, with its seed; a member of a group, while
    // the other list is shown.
    const RecipeStep steps[] = {
        {"CIFSlideFrameFilter", {{"inputFactorX", "0.5"}, {"inputCenter", "12,8"}}, {}, true},
        {"GLIF_Plasma", {{"GLIFResolution", "4"}}, 4294967295, true},
        {"CIDiscBlur", {{"inputRadius", "3.0"}}, {}, true}};
    edit(picture, [&] {
        choose("CIExposureAdjust");
        auto former = controller.currentStep();
        for (const RecipeStep& step : steps) {
            const auto expectTaken = [&] {
                waitForResult();
                EXPECT_EQ(controller.filterName(), step.identifier);
                for (const auto& [key, value] : step.set)
                    EXPECT_EQ(*controller.currentStep()->find(key), value) << key;
                EXPECT_TRUE(same(controller.outputImage(), madeBy(step, picture)));
            };
            const int before = view().undoManager().count();
            ASSERT_TRUE(controller.takeStep(step));
            expectTaken();
            if (!plugin::isGeneratorName(step.identifier)) {
                EXPECT_EQ(view().undoManager().count(), before + 1);
            }
            controller.undoButton();
            waitForResult();
            EXPECT_EQ(controller.currentStep(), former);
            controller.redoButton();
            expectTaken();
            former = controller.currentStep();
        }
        EXPECT_EQ(parts()._filtersGroupPopUpButton30->currentText(), "Disc Blur");
    });
}

TEST_F(EditorCommands, WrongStepsChangeNothing)
{
    edit(photo(), [&] {
        choose("CIExposureAdjust");
        const auto step = controller.currentStep();
        const int steps = view().undoManager().count();
        const std::pair<const char*, const char*> wrong[] = {
            {"CINothing", "no effect named"},
            {"Crop", "no effect named"},
            {"CIConstantColorGenerator", "no effect named"},
            {"CIExposureAdjust inputFog=1", "has no \"inputFog\""},
            {"CIFSobel inputIntensity=1000", "out of range"},
            {"CIFSobel inputIntensity=red", "takes a number"},
            {"CIGlassDistortion inputTexture=/nowhere.png", "inputTexture"},
            {"CIExposureAdjust defaults=false", "defaults=false"},
            {"CIFShadingFilter inputShadingImage=" CIF_TEST_DATA "/golden/photo-96x64.png",
             "no shading material"},
        };
        for (const auto& [text, error] : wrong) {
            const auto recipe = plugin::parseRecipe(text);
            ASSERT_TRUE(recipe) << text;
            // Also when only the last of several steps is wrong.
            const auto done = controller.takeRecipe({{"CIFSobel", {}, {}, true}, recipe->front()});
            EXPECT_FALSE(done) << text;
            EXPECT_THAT(done.error(), testing::HasSubstr(error)) << text;
            EXPECT_EQ(done.error().find('\n'), std::string::npos);
            EXPECT_EQ(controller.currentStep(), step) << text;
            EXPECT_EQ(view().undoManager().count(), steps) << text;
        }
    });
}

TEST_F(EditorCommands, RecipesTravelByTheClipboard)
{
    const PictureRef picture = photo();
    std::string recipe;
    PictureRef made;
    edit(picture, [&] {
        choose("CIExposureAdjust");
        setSlider("_slider1", 0.5);
        waitForResult();
        action("apply").trigger();
        waitForResult();
        action("copyRecipe").trigger();
        EXPECT_EQ(clipboard(), "CIExposureAdjust inputEV=0.5\n");
        choose("CIFSobel");
        action("copyRecipe").trigger();
        recipe = clipboard();
        made = controller.outputImage();
        EXPECT_FALSE(status().isEmpty());
    });
    EXPECT_TRUE(recipe.starts_with("CIExposureAdjust inputEV=0.5\nCIFSobel")) << recipe;
    edit(picture, [&] {
        QGuiApplication::clipboard()->setText(QString::fromStdString(recipe));
        action("pasteRecipe").trigger();
        waitFor([&] { return controller.filterName() == "CIFSobel" && !controller.isWaiting(); });
        EXPECT_TRUE(same(controller.outputImage(), made));
        action("copyRecipe").trigger();
        EXPECT_EQ(clipboard(), recipe);

        action("copyCommandLine").trigger();
        EXPECT_EQ(clipboard(), "cif apply CIExposureAdjust input.png -o output.png --set "
                               "inputEV=0.5 --then CIFSobel");

        QGuiApplication::clipboard()->setText("good morning");
        const auto step = controller.currentStep();
        action("pasteRecipe").trigger();
        EXPECT_THAT(status().toStdString(), testing::HasSubstr("no recipe"));
        EXPECT_EQ(controller.currentStep(), step);
    });
}

TEST_F(EditorCommands, PresetsComeBackThroughTheMenu)
{
    edit(photo(), [&] {
        QMenu& menu = part<QMenu>("presetsMenu");
        choose("CIExposureAdjust");
        EXPECT_TRUE(itemsOf(menu).contains("No Presets"));
        setSlider("_slider1", 0.25);
        action("savePreset").trigger();
        auto* panel = window().findChild<QInputDialog*>("presetName");
        ASSERT_NE(panel, nullptr);
        panel->setTextValue(" A & B/%  ");
        panel->accept();
        EXPECT_EQ(itemsOf(menu).first(), "A && B/%");
        EXPECT_FALSE(itemsOf(menu).contains("No Presets"));

        setSlider("_slider1", 1);
        choose("CIFSobel");
        EXPECT_TRUE(itemsOf(menu).contains("No Presets"));
        choose("CIExposureAdjust");
        itemOf(menu, "A && B/%")->trigger();
        EXPECT_EQ(part<editor::ParameterSlider>("_slider1").doubleValue(), 0.25);

        // The same name asks before it replaces.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const auto& [answer, kept] : {std::pair("Cancel", "0.25"), {"Replace", "0.75"}}) {
            setSlider("_slider1", 0.75);
            action("savePreset").trigger();
            window().findChild<QInputDialog*>("presetName")->setTextValue("A & B/%");
            window().findChild<QInputDialog*>("presetName")->accept();
            auto* question = window().findChild<QMessageBox*>("replacePreset");
            ASSERT_NE(question, nullptr);
            for (QAbstractButton* button : question->buttons())
                if (button->text() == QLatin1String(answer))
                    button->click();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            setSlider("_slider1", 0.1);
            itemOf(menu, "A && B/%")->trigger();
            EXPECT_EQ(*controller.currentStep()->find("inputEV"), kept);
        }

        itemOf(*itemOf(menu, "&Delete Preset")->menu(), "A && B/%")->trigger();
        EXPECT_TRUE(itemsOf(menu).contains("No Presets"));
    });
}

TEST_F(EditorCommands, FavouritesFilterTheLists)
{
    edit(photo(), [&] {
        choose("CIExposureAdjust");
        EXPECT_EQ(parts()._entryTitle->text(), "Exposure Adjust");
        EXPECT_FALSE(parts()._favouriteButton->isChecked());
        click(parts()._favouriteButton);
        EXPECT_TRUE(parts()._favouriteButton->isChecked());
        choose("CIFSobel");
        EXPECT_FALSE(parts()._favouriteButton->isChecked());
        const auto shownRows = [&] {
            QStringList shown;
            const QTableView& list = *parts()._tableView;
            for (int row = 0; row < list.model()->rowCount(); ++row)
                if (!list.isRowHidden(row) && !controller.identifierOfRow(row).isNull())
                    shown << controller.identifierOfRow(row);
            return shown;
        };
        const QStringList all = shownRows(), marked{"CIExposureAdjust"};
        click(parts()._favouritesButton);
        EXPECT_EQ(shownRows(), marked);
        EXPECT_EQ(controller.filterName(), "CIFSobel");
        // The mark counts at once.
        action("favourite").trigger();
        EXPECT_EQ(shownRows().size(), 2);
        action("favourite").trigger();
        EXPECT_EQ(shownRows(), marked);
        click(parts()._favouritesButton);
        EXPECT_EQ(shownRows(), all);

        QMenu& menu = part<QMenu>("favouritesMenu");
        ASSERT_EQ(itemsOf(menu), QStringList{"Exposure Adjust"});
        menu.actions().first()->trigger();
        EXPECT_EQ(controller.filterName(), "CIExposureAdjust");
    });
}

TEST_F(EditorCommands, ComparingRendersNothing)
{
    edit(photo(), [&] {
        choose("CIExposureAdjust");
        const int before = results();
        const std::function<void()> switches[] = {
            [&] { QTest::mousePress(parts()._compareButton, Qt::LeftButton); },
            [&] { QTest::mouseRelease(parts()._compareButton, Qt::LeftButton); },
            [&] { QTest::keyPress(&view(), Qt::Key_F8); },
            [&] { QTest::keyRelease(&view(), Qt::Key_F8); },
            [&] { action("showOriginal").trigger(); },
            [&] { action("showOriginal").trigger(); }};
        bool shows = false;
        for (const auto& press : switches) {
            press();
            shows = !shows;
            EXPECT_EQ(view().showsOriginal(), shows);
        }

        click(parts()._splitButton);
        EXPECT_TRUE(view().split());
        EXPECT_TRUE(action("split").isChecked());
        press(action("split").shortcut());
        EXPECT_FALSE(view().split());
        EXPECT_FALSE(parts()._splitButton->isChecked());
        waitForResult();
        EXPECT_EQ(results(), before);
    });
}

TEST_F(EditorCommands, WithoutPreviewNothingIsRenderedUntilItIsNeeded)
{
    const PictureRef picture = photo();
    RecipeStep last;
    const bool accepted = edit(picture, [&] {
        choose("CIExposureAdjust");
        const int before = results();
        click(parts()._previewButton);
        EXPECT_TRUE(view().showsOriginal());
        setSlider("_slider1", 0.5);
        controller.chooseEntry("CIFSobel");
        controller.chooseEntry("CIExposureAdjust");
        setSlider("_slider1", 0.25);
        EXPECT_EQ(*controller.currentStep()->find("inputEV"), "0.25");
        EXPECT_FALSE(controller.runner().isBusy());
        EXPECT_EQ(results(), before);
        // Switched on again, it shows the last values, once.
        click(parts()._previewButton);
        EXPECT_FALSE(view().showsOriginal());
        waitForResult();
        EXPECT_EQ(results(), before + 1);
        EXPECT_TRUE(same(controller.outputImage(), madeBy(*controller.currentStep(), picture)));

        action("preview").trigger();
        setSlider("_slider1", 0.75);
        last = *controller.currentStep();
        accept();
    });
    EXPECT_TRUE(accepted);
    EXPECT_TRUE(same(controller.outputImage(), madeBy(last, picture)));
    edit(picture, [&] {
        EXPECT_TRUE(parts()._previewButton->isChecked());
        EXPECT_FALSE(view().showsOriginal());
    });
}

TEST_F(EditorCommands, SeedIsShownTypedAndKept)
{
    generate({64, 48}, [&] {
        choose("GLIF_Plasma");
        QLineEdit& field = *parts()._seedField;
        EXPECT_EQ(field.text(), "0");
        const int steps = view().undoManager().count();
        type(field, "4294967295");
        waitForResult();
        EXPECT_EQ(controller.randomSeed(), 4294967295u);
        type(field, "4294967295"); // which changes nothing
        EXPECT_EQ(view().undoManager().count(), steps + 1);
        expectStepMakesWhatIsShown(controller.picture());
        for (const char* wrong : {"4294967296", "9999999999", ""}) {
            field.clear();
            type(field, wrong);
            EXPECT_EQ(controller.randomSeed(), 4294967295u) << wrong;
        }
        controller.undoButton();
        waitForResult();
        EXPECT_EQ(controller.randomSeed(), 0u);
        window().setFocus();
        view().setFocus();
        EXPECT_EQ(field.text(), "0");
        type(field, "77");
        waitForResult();
        controller.generateButton();
        EXPECT_EQ(field.text(), QString::number(controller.randomSeed()));
        type(field, "123456");
        waitForResult();
    });
    EXPECT_EQ(editor::Preferences().value("Seed").toUInt(), 123456u);
}

TEST_F(EditorCommands, TheLastAcceptedEntryComesBackAfterTheStart)
{
    const PictureRef picture = photo();
    edit(picture, [&] {
        choose("CIFSobel");
        cancel();
    });
    std::string first;
    edit(picture, [&] {
        first = controller.filterName();
        EXPECT_NE(first, "CIFSobel");
        choose("CIFSobel");
        accept();
    });
    generate({64, 48}, [&] {
        EXPECT_NE(controller.filterName(), "CIFSobel");
        choose("GLIF_Foam");
        accept();
    });
    edit(picture, [&] { EXPECT_EQ(controller.filterName(), "CIFSobel"); });
    generate({64, 48}, [&] { EXPECT_EQ(controller.filterName(), "GLIF_Foam"); });
    // A selection that the host asks for stays.
    edit(picture, {10, 10, 20, 20}, [&] { EXPECT_TRUE(view().isSelected()); });
    // What a later version may have left there is passed over.
    editor::Preferences().setValue("LastEntry/filters", "CINothing");
    edit(picture, [&] { EXPECT_EQ(controller.filterName(), first); });
}

TEST_F(EditorCommands, ShortcutsAreListedOnceAndCanBeSearched)
{
    edit(photo(), [&] {
        QStringList listed, used;
        for (const editor::ShortcutLine& line : commands().shortcuts()) {
            EXPECT_FALSE(line.text.isEmpty());
            EXPECT_FALSE(line.text.contains('&')) << line.text.toStdString();
            listed << line.keys.split(", ");
        }
        for (const QAction* item : window().findChildren<QAction*>())
            for (const QKeySequence& keys : item->shortcuts()) {
                const QString text = keys.toString(QKeySequence::NativeText);
                EXPECT_TRUE(listed.contains(text)) << text.toStdString();
                EXPECT_FALSE(used.contains(text)) << text.toStdString();
                used << text;
            }
        EXPECT_GT(used.size(), 20);

        action("shortcuts").trigger();
        auto* list = window().findChild<QDialog*>("shortcutList");
        ASSERT_NE(list, nullptr);
        auto* tree = list->findChild<QTreeWidget*>();
        const auto shownLines = [&] {
            QStringList shown;
            for (int i = 0; i < tree->topLevelItemCount(); ++i)
                for (int j = 0; j < tree->topLevelItem(i)->childCount(); ++j)
                    if (!tree->topLevelItem(i)->isHidden() &&
                        !tree->topLevelItem(i)->child(j)->isHidden())
                        shown << tree->topLevelItem(i)->child(j)->text(0);
            return shown;
        };
        EXPECT_EQ(shownLines().size(), qsizetype(commands().shortcuts().size()));
        QTest::keyClicks(list->findChild<QLineEdit*>("shortcutSearch"), "ctrl+ recipe");
        EXPECT_EQ(shownLines(), (QStringList{"Copy Recipe", "Paste Recipe"}));
        list->reject();
    });
}

TEST_F(EditorCommands, UndoInAFieldUndoesTheTyping)
{
    edit(photo(), [&] {
        window().activateWindow();
        choose("CIExposureAdjust");
        // Typed counts as taken for a command, and is the window's to undo once it is confirmed.
        auto& number = part<editor::NumberField>("_textField1");
        number.setFocus();
        number.selectAll();
        QTest::keyClicks(&number, "0.25");
        press(action("copyRecipe").shortcut(), &number);
        EXPECT_EQ(clipboard(), "CIExposureAdjust inputEV=0.25\n");
        press(QKeySequence(Qt::CTRL | Qt::Key_Z), &number);
        EXPECT_EQ(number.doubleValue(), 1.3f);
        number.selectAll();
        QTest::keyClicks(&number, "0.75");
        press(action("apply").shortcut(), &number);
        waitForResult();
        EXPECT_EQ(controller.record().steps.at(0).applied->set[0].second, "0.75");
        controller.undoButton();
        controller.undoButton();

        setSlider("_slider1", 0.5);
        QLineEdit& field = *parts()._searchField;
        field.setFocus();
        QTest::keyClicks(&field, "so");
        const int index = view().undoManager().index();
        press(QKeySequence(Qt::CTRL | Qt::Key_Z), &field);
        EXPECT_NE(field.text(), "so");
        EXPECT_EQ(view().undoManager().index(), index);
        // Nothing typed is left: now the keys mean the window.
        while (field.isUndoAvailable())
            field.undo();
        press(QKeySequence(Qt::CTRL | Qt::Key_Z), &field);
        EXPECT_EQ(view().undoManager().index(), index - 1);
        EXPECT_EQ(*controller.currentStep()->find("inputEV"), "1.2999999523162842");
        press(QKeySequence(Qt::CTRL | Qt::Key_Y));
        EXPECT_EQ(*controller.currentStep()->find("inputEV"), "0.5");
    });
}

TEST_F(EditorCommands, LongWorkIsShownAndStops)
{
    Gate gate;
    edit(gate.picture(), [&] {
        const auto waitUntilShown = [&] {
            waitFor([&] { return parts()._stopButton->isVisible(); });
            EXPECT_TRUE(parts()._progressBar->isVisible());
            EXPECT_TRUE(action("stop").isEnabled());
        };
        const PictureRef before = controller.outputImage();
        EXPECT_FALSE(parts()._stopButton->isVisible());
        EXPECT_FALSE(action("stop").isEnabled());
        controller.chooseEntry("CIColorInvert");
        waitUntilShown();
        // Newer values do not hide it.
        controller.chooseEntry("CIFSobel");
        EXPECT_TRUE(parts()._stopButton->isVisible());

        press(QKeySequence(Qt::Key_Escape));
        gate.open();
        waitFor([&] { return !controller.isWaiting(); });
        EXPECT_FALSE(controller.runner().isBusy());
        EXPECT_FALSE(parts()._stopButton->isVisible());
        EXPECT_FALSE(action("stop").isEnabled());
        EXPECT_EQ(results(), 0);
        EXPECT_EQ(controller.outputImage(), before);
        EXPECT_THAT(status().toStdString(), testing::StartsWith("Stopped"));
        EXPECT_TRUE(parts()._statusLabel->isVisible());
        // That holds until something changes.
        setSlider("_slider1", 2);
        EXPECT_EQ(status(), "");
        waitForResult();
        EXPECT_EQ(results(), 1);
    });
}

class DroppedFile {
public:
    explicit DroppedFile(const QString& file) { _data.setUrls({QUrl::fromLocalFile(file)}); }
    // Whether it was taken.
    bool on(QWidget* target)
    {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &_data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDropEvent drop({5, 5}, Qt::CopyAction, &_data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
        EXPECT_EQ(enter.isAccepted(), drop.isAccepted());
        return drop.isAccepted();
    }

private:
    QMimeData _data;
};

TEST_F(EditorCommands, DroppedPicturesBecomeTexturesAndBrushes)
{
    const TemporaryFolder folder;
    const QString texture = QString::fromStdString((folder.path() / "my texture.png").string());
    const QString broken = QString::fromStdString(folder.write("broken.png", "no").string());
    const QString text = QString::fromStdString(folder.write("notes.txt", "no").string());
    ASSERT_TRUE(codecs::writePicture(*photo(), texture.toStdString(), codecs::FileFormat::Png, {}));
    const PictureRef picture = photo();
    edit(picture, [&] {
        DroppedFile good(texture);
        choose("CIExposureAdjust");
        EXPECT_FALSE(good.on(parts()._controlsView));
        choose("CIGlassDistortion");
        const int steps = view().undoManager().count();
        EXPECT_FALSE(DroppedFile(text).on(parts()._texturePopUpButton10));
        const auto before = controller.currentStep();
        EXPECT_TRUE(DroppedFile(broken).on(parts()._texturePopUpButton10));
        EXPECT_EQ(controller.currentStep(), before);
        EXPECT_THAT(status().toStdString(), testing::HasSubstr("broken.png"));
        EXPECT_TRUE(good.on(parts()._texturePopUpButton10));
        waitForResult();
        EXPECT_EQ(*controller.currentStep()->find("inputTexture"), texture.toStdString());
        EXPECT_EQ(parts()._texturePopUpButton10->currentText(), "Other...");
        EXPECT_EQ(view().undoManager().count(), steps + 1);
        expectStepMakesWhatIsShown(picture);
        // Taken back from its text, it is the same picture.
        const auto step = *controller.currentStep();
        controller.undoButton();
        ASSERT_TRUE(controller.takeStep(step));
        waitForResult();
        EXPECT_EQ(controller.currentStep(), step);
        expectStepMakesWhatIsShown(picture);

        choose("GLIF_Dabs");
        EXPECT_TRUE(good.on(parts()._controlsView));
        waitForResult();
        EXPECT_EQ(*controller.currentStep()->find("GLIFBrush"), texture.toStdString());
        expectStepMakesWhatIsShown(picture);
    });
}

} // namespace
