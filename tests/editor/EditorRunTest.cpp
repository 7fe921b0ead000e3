// The modal runs of the editor window, from the start call to what the host is handed back.
#include "tests/editor/EditorRun.h"

#include "editor/CIFImageInfoController.h"
#include "editor/PictureScrollView.h"
#include "editor/Preferences.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QUndoStack>
#include <QWindow>

#include <condition_variable>
#include <fstream>
#include <mutex>

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

// A picture whose pixels are not there before the gate is opened, so that results wait.
class Gate {
public:
    ~Gate() { open(); }
    void open()
    {
        const std::lock_guard held(_state->lock);
        _state->isOpen = true;
        _state->opened.notify_all();
    }
    PictureRef picture() const
    {
        return drawing::Picture::fromDeferred(std::make_shared<Source>(_state), {96, 64});
    }

private:
    struct State {
        std::mutex lock;
        std::condition_variable opened;
        bool isOpen = false;
    };
    struct Source : drawing::DeferredSource {
        explicit Source(std::shared_ptr<State> s) : state(std::move(s)) {}
        int pixelsWide() const override { return 96; }
        int pixelsHigh() const override { return 64; }
        imaging::BitmapRef render() const override
        {
            std::unique_lock held(state->lock);
            state->opened.wait(held, [&] { return state->isOpen; });
            return support::picture("photo-96x64");
        }
        std::shared_ptr<State> state;
    };
    std::shared_ptr<State> _state = std::make_shared<State>();
};

// The end of the form's name in the log.
constexpr const char* kNoForm = "Failed to load ImageEditor.nib";

} // namespace

TEST_F(EditorRun, BeginsWithTheWholePictureAndAnEntryThatOnlySelects)
{
    const PictureRef picture = photo();
    const bool accepted = edit(picture, [&] {
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(window().windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(controller.filterName(), "Crop");
        EXPECT_EQ(controller.editMode(), 0);
        EXPECT_EQ(controller.selectedTab(), "filters");
        EXPECT_EQ(parts()._helpTabView->currentIndex(), 0);
        EXPECT_EQ(parts()._tableView->selectionModel()->selectedRows().value(0).row(), 0);
        EXPECT_EQ(view().picture(), picture);
        EXPECT_EQ(view().original(), picture);
        EXPECT_EQ(view().pickPoint(), (Point{48, 32}));
        EXPECT_FALSE(controller.isSelected());
        EXPECT_FALSE(controller.isWaiting());
        accept();
    });
    EXPECT_TRUE(accepted);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(controller.outputImage(), picture);
    EXPECT_FALSE(controller.isSelected());
    EXPECT_THAT(controller.record().steps, IsEmpty());
    EXPECT_EQ(controller.runner().counters().results, 0);
    // What belongs to the host is let go of.
    EXPECT_EQ(view().picture(), nullptr);
    EXPECT_EQ(view().original(), nullptr);
    EXPECT_EQ(controller.picture(), nullptr);
}

TEST_F(EditorRun, HandsBackTheSelection)
{
    const Rect given = {10, 20, 30, 25}, changed = {5, 6, 70, 8};
    EXPECT_TRUE(edit(photo(), given, [&] {
        EXPECT_TRUE(controller.isSelected());
        EXPECT_EQ(controller.getSelectedRect(), given);
        accept();
    }));
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
        accept();
        EXPECT_EQ(controller.runner().counters().results, results);
    }));
    EXPECT_NEAR(handed["CIFinputCenter"].get<Point>()->x, 24, 1);
    EXPECT_EQ(handed.intValue("GLIFRandomSeed", -1), 0);
    EXPECT_TRUE(same(controller.outputImage(), applied("CITwirlDistortion", handed, picture)));
    EXPECT_THAT(controller.record().steps, SizeIs(1));
}
