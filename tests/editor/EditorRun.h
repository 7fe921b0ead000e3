// Whole runs of the editor window, driven from inside: the start call is made, and a script plays
// the user in the modal loop that it runs.
//
//     const bool accepted = edit(photo(), [&] {
//         choose("CISepiaTone");
//         accept();
//     });
//
// A script that ends without accept(), cancel() or leave() has the run cancelled.
#pragma once

#include "editor/CIFImageEditorController.h"
#include "editor/CIFImageEditorView.h"
#include "editor/Preferences.h"
#include "platform/drawing/Picture.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"
#include "tests/editor/HeldPixels.h"
#include "tests/plugin/Environment.h"
#include "tests/support/Support.h"

// The window has parts of nearly every kind.
#include <QSignalSpy>
#include <QTest>
#include <QtWidgets>

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

// A picture whose pixels are not there before the gate is opened, so that results wait.
class Gate {
public:
    ~Gate() { open(); }
    void open() { _pixels->letGo(); }
    foundation::PictureRef picture() const
    {
        return drawing::Picture::fromDeferred(_pixels, {96, 64});
    }

private:
    std::shared_ptr<HeldPixels> _pixels =
        std::make_shared<HeldPixels>(support::picture("photo-96x64"));
};

class EditorRun : public testing::Test {
protected:
    using PictureRef = foundation::PictureRef;
    using Script = std::function<void()>;
    static constexpr int kPatience = 30'000; // milliseconds until something counts as hung

    // Nothing that other tests left to be remembered.
    EditorRun() { editor::Preferences().clear(); }

    // Filter mode, with a selection or without; true when accepted.
    bool edit(const PictureRef& picture, const Script& script)
    {
        return play(script,
                    [&] { return controller.startEditorUseSelectionWithRect(picture, false, {}); });
    }
    bool edit(const PictureRef& picture, const foundation::Rect& selection, const Script& script)
    {
        return play(script, [&] {
            return controller.startEditorUseSelectionWithRect(picture, true, selection);
        });
    }
    // Generator mode, on a blank of that size or on a picture.
    bool generate(foundation::Size size, const Script& script)
    {
        return play(script, [&] {
            return controller.startGeneratorWithRect(nullptr, {0, 0, size.width, size.height});
        });
    }
    bool generate(const PictureRef& picture, const Script& script)
    {
        return play(script, [&] { return controller.startGeneratorWithRect(picture, {}); });
    }

    // The rest is for scripts.

    QMainWindow& window() { return *controller.window(); }
    CIFImageEditorView& view() { return *controller.pictureView(); }
    const editor::EditorOutlets& parts() { return controller.outlets(); }
    // Of the window, by object name.
    template <class T>
    T& part(const char* name)
    {
        T* found = window().findChild<T*>(QLatin1String(name));
        if (!found)
            throw std::runtime_error(std::string("the window has no ") + name);
        return *found;
    }

    static void click(QWidget* button)
    {
        ASSERT_NE(button, nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // In place of what is there.
    static void type(QWidget& field, const char* text)
    {
        field.setFocus();
        QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }
    void accept()
    {
        _isLeft = true;
        click(parts()._buttonSet);
    }
    void cancel()
    {
        _isLeft = true;
        click(parts()._buttonCancel);
    }

    // The run ends in another way than by its buttons.
    void leave() { _isLeft = true; }

    static bool waitFor(const std::function<bool()>& condition)
    {
        const bool met = QTest::qWaitFor(condition, kPatience);
        EXPECT_TRUE(met) << "waited in vain";
        return met;
    }
    // Until the result of the current values is shown.
    void waitForResult()
    {
        waitFor([this] { return !controller.isWaiting(); });
    }
    // Of the list that is shown.
    void choose(const std::string& identifier)
    {
        controller.chooseEntry(identifier);
        EXPECT_EQ(controller.filterName(), identifier);
        waitForResult();
    }

    static PictureRef photo()
    {
        return drawing::Picture::fromBitmap(support::picture("photo-96x64"));
    }
    static imaging::BitmapRef pixelsOf(const PictureRef& picture)
    {
        const imaging::BitmapRef pixels = picture ? picture->bitmap() : nullptr;
        if (!pixels)
            throw std::runtime_error("there is no picture");
        return pixels;
    }
    // What a host gets for the values without any window.
    static PictureRef applied(const std::string& identifier,
                              const foundation::Dictionary& attributes, const PictureRef& picture,
                              std::uint32_t seed = 0)
    {
        CIFMain plugIn;
        if (!plugin::isGeneratorName(identifier))
            return plugIn.CIFApplyFilterAttributesForImage(identifier, attributes, picture);
        std::srand(seed);
        return plugIn.CIFGenerateLayerAttributesForImage(identifier, attributes, picture);
    }
    // All that can be chosen of an effects set, members of groups instead of the groups.
    static std::vector<std::string> entriesOf(std::uint32_t effectsSet)
    {
        CIFMain plugIn;
        plugIn.CIFSetEffectsSet(effectsSet);
        std::vector<std::string> all;
        for (const auto& category : *plugIn.CIFAllFilterDescriptors())
            for (const auto& entry : *(*category.dictionary())["CIFFilterList"].array())
                if (const auto members = (*entry.dictionary())["DESC_LIST"].array())
                    for (const auto& member : *members)
                        all.push_back(member.dictionary()->stringValue("CIFFilterIdentifier"));
                else
                    all.push_back(entry.dictionary()->stringValue("CIFFilterIdentifier"));
        return all;
    }
    static bool same(const PictureRef& a, const PictureRef& b)
    {
        return support::compare(*pixelsOf(a), *pixelsOf(b)).largest == 0;
    }

    CIFImageEditorController controller;

private:
    bool play(const Script& script, const std::function<bool()>& start)
    {
        _isLeft = false;
        // A run that never comes to its loop takes its script with it.
        QObject player;
        QTimer::singleShot(0, &player, [&] {
            try {
                script();
            } catch (const std::exception& error) {
                ADD_FAILURE() << error.what();
            }
            if (!_isLeft)
                controller.windowShouldClose();
            QTimer::singleShot(kPatience, &player, [&] {
                ADD_FAILURE() << "the run does not end: " << controller.filterName()
                              << (window().isVisible() ? ", visible" : ", hidden")
                              << (controller.isWaiting() ? ", waiting" : "")
                              << (controller.runner().isBusy() ? ", busy" : "");
                controller.windowShouldClose();
            });
        });
        return start();
    }

    bool _isLeft = false;
};
