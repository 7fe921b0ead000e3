// The picture view, driven with the mouse, the wheel and keys.
#include "editor/CIFImageEditorView.h"
#include "editor/ColorWell.h"
#include "editor/NamedImages.h"
#include "platform/drawing/Scaling.h"
#include "tests/editor/HeldPixels.h"
#include "tests/support/Golden.h"
#include "tests/support/Support.h"

#include <QAccessible>
#include <QColorDialog>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <gmock/gmock.h>

#include <cmath>

using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Point;
using foundation::Rect;
using testing::ElementsAre;

namespace {

constexpr QRgb kRed = 0xffc03020, kGreen = 0xff20a040, kBlue = 0xff3040c0, kYellow = 0xffe0d020;

imaging::BitmapRef plain(int width, int height, QRgb color)
{
    return support::converted(
        *support::bitmapFrom(width, height,
                             [&](int, int) {
                                 return support::Rgba{qRed(color) / 255.0f, qGreen(color) / 255.0f,
                                                      qBlue(color) / 255.0f, 1};
                             }),
        imaging::PixelFormat::Rgba8);
}

PictureRef plainPicture(int width, int height, QRgb color = kRed)
{
    return drawing::Picture::fromBitmap(plain(width, height, color));
}

std::shared_ptr<HeldPixels> held(int width, int height, QRgb color)
{
    return std::make_shared<HeldPixels>(plain(width, height, color));
}

// Writes down what it is told.
class Notes : public editor::PictureViewController {
public:
    std::string name;
    int mode = 0, pointing = 0;
    std::vector<std::string> calls;
    Point center;

    std::string filterName() const override { return name; }
    int editMode() const override { return mode; }
    int pointingMode() const override { return pointing; }
    void applyCurrentFilter() override { calls.push_back("apply"); }
    void setCenterPoint(Point p) override
    {
        center = p;
        calls.push_back("center");
    }
    void selectionDidChange() override { calls.push_back("selection"); }
    void scrollWheelDidChange() override { calls.push_back("zoom"); }
    void initRandomSeedWithValue(std::uint32_t) override {}
    void applyFilterWithAttributes(const std::string&, const Dictionary&) override {}
    void updateUndoRedoButtons() override {}
    void restoreAttributes(const std::string&, const Dictionary&) override {}

    std::vector<std::string> take() { return std::exchange(calls, {}); }
};

class PictureView : public testing::Test {
protected:
    PictureView()
    {
        scroll.resize(500, 400);
        view.setEditorController(&controller);
        scroll.show();
    }

    void open(const PictureRef& picture, float scale = 1)
    {
        view.setPicture(picture);
        view.updateSize();
        view.setScaleFactor(scale);
        controller.calls.clear();
    }
    QPoint at(double x, double y) { return view.widgetFromPicture(Point{x, y}).toPoint(); }
    void press(double x, double y) { QTest::mousePress(&view, Qt::LeftButton, {}, at(x, y)); }
    void drag(double x, double y)
    {
        QMouseEvent event(QEvent::MouseMove, at(x, y), view.mapToGlobal(at(x, y)), Qt::NoButton,
                          Qt::LeftButton, {});
        QApplication::sendEvent(&view, &event);
    }
    void release(double x, double y) { QTest::mouseRelease(&view, Qt::LeftButton, {}, at(x, y)); }
    void dragFromTo(Point from, Point to)
    {
        press(from.x, from.y);
        drag((from.x + to.x) / 2, (from.y + to.y) / 2);
        drag(to.x, to.y);
        release(to.x, to.y);
    }
    void wheel(QPoint delta, Qt::ScrollPhase phase = Qt::NoScrollPhase)
    {
        const QPointF middle = view.rect().center();
        QWheelEvent event(middle, view.mapToGlobal(middle), {}, delta, Qt::NoButton, {}, phase,
                          false);
        QApplication::sendEvent(&view, &event);
    }
    QImage grabbed() { return view.grab().toImage().convertToFormat(QImage::Format_RGB32); }
    QRgb shownAt(const QImage& image, double x, double y)
    {
        const QPointF p = view.widgetFromPicture(Point{x, y}) * image.devicePixelRatio();
        return image.pixel(int(std::floor(p.x())), int(std::floor(p.y())));
    }
    static bool waitFor(const std::function<bool()>& condition)
    {
        return QTest::qWaitFor(condition, 20'000);
    }
    struct Seen {
        double x, y;
        QRgb color;
    };
    void expectShown(std::initializer_list<Seen> places)
    {
        const QImage image = grabbed();
        for (const auto& [x, y, color] : places)
            EXPECT_EQ(shownAt(image, x, y), color) << x << ", " << y;
    }
    // Whose pixels are asked for, and held.
    std::shared_ptr<HeldPixels> showHeld(QRgb color)
    {
        const auto source = held(100, 80, color);
        view.setPicture(drawing::Picture::fromDeferred(source, {100, 80}));
        EXPECT_TRUE(waitFor([&] { return source->asked.load(); }));
        return source;
    }
    // The picture's middle in the widget is the widget's middle, to a pixel.
    void expectCentred(double x, double y)
    {
        const QPointF p = view.widgetFromPicture(Point{x, y});
        EXPECT_NEAR(p.x(), view.width() * 0.5, 1.01);
        EXPECT_NEAR(p.y(), view.height() * 0.5, 1.01);
    }

    Notes controller;
    editor::PictureScrollView scroll;
    CIFImageEditorView& view = scroll.pictureView();
};

} // namespace

TEST_F(PictureView, ZoomIsClampedAndSetsFrameAndBounds)
{
    open(plainPicture(200, 100));
    for (const auto& [given, kept] :
         {std::pair(0.01f, 0.02f), {100, 80}, {3, 3}, {NAN, 0.02f}, {INFINITY, 80}}) {
        view.setScaleFactor(given);
        EXPECT_EQ(view.getScaleFactor(), kept) << given;
    }
    // Smaller than the window in both directions, then in one, then in none.
    const double wide = scroll.contentSize().width(), high = scroll.contentSize().height();
    const struct {
        float scale;
        Rect frame, bounds;
    } cases[] = {{0.5f, {0, 0, wide, high}, {0, 0, wide * 2, high * 2}},
                 {3, {0, 0, 600, high}, {0, 0, 200, high / 3}},
                 {8, {0, 0, 1600, 800}, {0, 0, 200, 100}}};
    for (const auto& [scale, frame, bounds] : cases) {
        view.setScaleFactor(scale);
        EXPECT_EQ(view.frame(), frame) << scale;
        EXPECT_DOUBLE_EQ(view.bounds().width, bounds.width) << scale;
        EXPECT_DOUBLE_EQ(view.bounds().height, bounds.height) << scale;
    }
    view.updateSize();
    EXPECT_EQ(view.frame(), (Rect{0, 0, 200, 100}));
}

TEST_F(PictureView, ContentSizeIsWhatBorderAndBothBarsLeave)
{
    open(plainPicture(4000, 3000));
    const QSize content = scroll.viewport()->size();
    EXPECT_EQ(scroll.contentSize(), content);
    view.setScaleFactor(0.02f);
    EXPECT_GT(scroll.viewport()->width(), content.width()) << "without bars";
    EXPECT_EQ(scroll.contentSize(), content);
}

TEST_F(PictureView, CentresThePictureOrTheSelection)
{
    for (const float scale : {0.05f, 0.4f, 1.0f, 3.3f, 80.0f}) {
        open(plainPicture(401, 303), scale);
        expectCentred(200.5, 151.5);
        view.adobtPositionToCenter();
        expectCentred(200.5, 151.5);
    }
    open(plainPicture(2000, 1500));
    view.setSelection({1000, 700, 100, 60});
    view.setScaleFactor(2);
    // Of the content size, which the bars leave here.
    expectCentred(1050, 730);
    // Near a corner there is nothing to bring to the middle.
    view.setSelection({0, 0, 10, 10});
    view.setScaleFactor(2);
    EXPECT_NEAR(view.visibleRect().x, 0, 1);
    EXPECT_NEAR(view.visibleRect().y, 0, 1);
    scroll.resize(700, 500);
    expectCentred(view.visibleRect().midX(), view.visibleRect().midY());
    EXPECT_EQ(view.getScaleFactor(), 2);
}

TEST_F(PictureView, WheelStepsAreFinerBelowFullSize)
{
    open(plainPicture(200, 100));
    const struct {
        float from;
        int turned;
        float zoomed;
    } turns[] = {{1, 120, 1.025f},  {2, 120, 2.2f}, {2, 360, 2.2f},       {2, -120, 1.8f},
                 {1, -120, 0.975f}, {1, 0, 0.975f}, {0.02f, -120, 0.02f}, {80, 120, 80}};
    for (const auto& [from, turned, zoomed] : turns) {
        view.setScaleFactor(from);
        wheel({0, turned});
        EXPECT_FLOAT_EQ(view.getScaleFactor(), zoomed) << from << ", " << turned;
    }
    // Parts of a notch add up to one; touching a pad is no turn.
    view.setScaleFactor(1);
    controller.take();
    wheel({}, Qt::ScrollBegin);
    for (int i = 0; i < 7; ++i)
        wheel({0, 15}, Qt::ScrollUpdate);
    EXPECT_EQ(view.getScaleFactor(), 1);
    wheel({0, 15}, Qt::ScrollUpdate);
    wheel({}, Qt::ScrollEnd);
    EXPECT_FLOAT_EQ(view.getScaleFactor(), 1.025f);
    EXPECT_THAT(controller.take(), ElementsAre("zoom"));
}

TEST_F(PictureView, DragsDrawMoveAndResizeTheSelection)
{
    open(plainPicture(300, 200));
    press(50, 50);
    EXPECT_FALSE(view.isSelected());
    drag(10, 20);
    EXPECT_TRUE(view.isSelectionHFlipped() && view.isSelectionVFlipped());
    release(10, 20);
    EXPECT_EQ(view.getSelection(), (Rect{10, 20, 40, 30}));
    EXPECT_EQ(view.pickPoint(), (Point{50, 50}));
    // Dropped when the old one was missed by the press, told at once and at the end.
    EXPECT_THAT(controller.take(), ElementsAre("selection", "selection"));

    const struct {
        const char* what;
        Point from, to;
        Rect selection;
    } drags[] = {
        {"a new one, to the picture's sides", {250, 150}, {500, 400}, {250, 150, 50, 50}},
        {"another", {160, 110}, {100, 50}, {100, 50, 60, 60}},
        {"moved", {130, 80}, {140, 75}, {110, 45, 60, 60}},
        {"stopped by the picture's side, whole", {130, 65}, {10, 65}, {0, 45, 60, 60}},
        {"by its right side", {60, 70}, {100, 90}, {0, 45, 100, 60}},
        {"by a corner", {103, 108}, {113, 128}, {0, 45, 110, 80}},
        {"moved right", {60, 80}, {100, 80}, {40, 45, 110, 80}},
        {"its right side past the left one", {150, 80}, {10, 80}, {10, 45, 30, 80}},
    };
    for (const auto& [what, from, to, selection] : drags) {
        dragFromTo(from, to);
        EXPECT_EQ(view.getSelection(), selection) << what;
    }
    press(200, 20);
    release(200, 20);
    EXPECT_FALSE(view.isSelected());
    // Margins are lengths on the screen.
    view.setScaleFactor(2);
    view.setSelection({100, 50, 100, 80});
    dragFromTo({96, 90}, {106, 90}); // 8 pixels outside: a new one begins
    EXPECT_EQ(view.getSelection().width, 10);
    view.setSelection({100, 50, 100, 80});
    dragFromTo({98, 90}, {108, 90}); // 4 pixels outside: the side
    EXPECT_EQ(view.getSelection(), (Rect{110, 50, 90, 80}));
    // What is no place reads back as one.
    view.setSelection({NAN, -INFINITY, 30, NAN});
    EXPECT_EQ(view.getSelection(), (Rect{0, 0, 30, 0}));
}

TEST_F(PictureView, PicksTheCentreInPreviewMode)
{
    controller.mode = 1;
    open(plainPicture(300, 200));
    controller.name = "GLIF_Plasma"; // which takes no clicks
    press(50, 60);
    drag(80, 90);
    EXPECT_TRUE(controller.take().empty());
    EXPECT_EQ(view.pickPoint(), Point());
    release(80, 90);
    controller.take();
    controller.name = "CIFMirrorFilter";
    press(50, 60);
    EXPECT_EQ(view.pickPoint(), (Point{50, 60}));
    EXPECT_THAT(controller.take(), ElementsAre("selection", "apply"));
    drag(330, -10);
    EXPECT_EQ(view.pickPoint(), (Point{330, -10}));
    EXPECT_EQ(controller.center, (Point{330, -10}));
    EXPECT_THAT(controller.take(), ElementsAre("center", "apply"));
    release(330, -10);
    EXPECT_THAT(controller.take(), ElementsAre("selection"));
    EXPECT_FALSE(view.isSelected());
    press(-20, 230);
    EXPECT_EQ(view.pickPoint(), (Point{0, 200})) << "a click stays in the picture";
}

TEST_F(PictureView, RightButtonFitsTheSelectionAndGoesBack)
{
    open(plainPicture(300, 200), 1.5f);
    const auto rightClick = [&] { QTest::mouseClick(&view, Qt::RightButton, {}, {20, 20}); };
    rightClick();
    EXPECT_EQ(view.getScaleFactor(), 1.5f);
    EXPECT_TRUE(controller.calls.empty());

    view.setSelection({100, 50, 100, 20});
    const float fitted =
        float(std::min(scroll.contentSize().width() / 120.0, scroll.contentSize().height() / 24.0));
    rightClick();
    EXPECT_FLOAT_EQ(view.getScaleFactor(), fitted);
    expectCentred(150, 60);
    rightClick();
    EXPECT_EQ(view.getScaleFactor(), 1.5f);
    // Moving it leaves the fitted state: the next click fits again, from the zoom there is.
    rightClick();
    dragFromTo({150, 60}, {160, 60});
    view.setScaleFactor(2);
    rightClick();
    EXPECT_FLOAT_EQ(view.getScaleFactor(), fitted);
    // So does dropping it.
    view.setScaleFactor(3);
    view.setTouched(false);
    view.setSelection({100, 50, 100, 20});
    rightClick();
    EXPECT_FLOAT_EQ(view.getScaleFactor(), fitted);
}

TEST_F(PictureView, ArrowKeysNudgeAndEscapeDrops)
{
    open(plainPicture(300, 200));
    view.setSelection({100, 50, 40, 30});
    QTest::keyClick(&view, Qt::Key_Left);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.getSelection(), (Rect{99, 60, 40, 30}));
    for (int i = 0; i < 30; ++i)
        QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Right, Qt::ControlModifier);
    // At the side it does not wind up beyond what is seen.
    QTest::keyClick(&view, Qt::Key_Up);
    EXPECT_EQ(view.getSelection(), (Rect{99, 1, 40, 30}));
    // A preview's selection is not moved by keys, as it is not by the mouse.
    controller.mode = 1;
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_EQ(view.getSelection().x, 99);
    controller.mode = 0;
    // Without a selection, keys are the window's and the scroll bars'.
    for (const bool goesOn : {false, true}) {
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(&view, &escape);
        EXPECT_EQ(escape.isAccepted(), !goesOn);
        EXPECT_FALSE(view.isSelected());
    }
    view.setScaleFactor(10);
    const int before = scroll.horizontalScrollBar()->value();
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_EQ(scroll.horizontalScrollBar()->value(), before + 20);
}

TEST_F(PictureView, CursorsFollowModeAndSelection)
{
    open(plainPicture(300, 200));
    const struct {
        int mode, pointing;
        Point at;
        int cursor;
    } cases[] = {{0, 0, {150, 100}, 4},
                 {1, 0, {150, 100}, 7},
                 {1, 2, {150, 100}, 11},
                 {1, 2, {5000, 100}, 7}};
    for (const auto& c : cases) {
        controller.mode = c.mode;
        controller.pointing = c.pointing;
        EXPECT_EQ(view.cursorTypeAt(c.at), c.cursor);
    }
    controller.mode = 0;
    view.setSelection({100, 50, 100, 80});
    const auto shown = [&](int type) {
        return view.cursor().shape() == Qt::BitmapCursor &&
               view.cursor().pixmap().cacheKey() ==
                   editor::cursorFromType(type).pixmap().cacheKey();
    };
    QTest::mouseMove(&view, at(150, 90));
    EXPECT_TRUE(shown(8));
    press(150, 90);
    EXPECT_TRUE(shown(9));
    drag(299, 199); // the pointer outruns the selection
    EXPECT_TRUE(shown(9));
    release(299, 199);
    EXPECT_TRUE(shown(2)); // over the corner that stopped at the picture's
    QTest::mouseMove(&view, at(10, 10));
    EXPECT_TRUE(shown(4));
}

TEST_F(PictureView, MiddleButtonPans)
{
    open(plainPicture(2000, 1500));
    const Point held = view.pictureFromWidget({200, 150});
    QTest::mousePress(&view, Qt::MiddleButton, {}, {200, 150});
    QTest::mouseMove(&view, {170, 260});
    QTest::mouseRelease(&view, Qt::MiddleButton, {}, {170, 260});
    EXPECT_EQ(view.pictureFromWidget({170, 260}), held);
    EXPECT_FALSE(view.isSelected());
}

TEST_F(PictureView, DrawsInOrder)
{
    open(plainPicture(100, 80));
    const QRgb around = view.palette().color(QPalette::Mid).rgb();
    QImage image = grabbed();
    for (const Point p : {Point{50, 40}, {0.5, 0.5}, {99.5, 79.5}})
        EXPECT_EQ(shownAt(image, p.x, p.y), kRed) << p.x << ", " << p.y;
    // A line round the picture, one pixel wide, corners included.
    for (const Point p : {Point{-0.5, 40}, {100.5, 40}, {50, -0.5}, {50, 80.5}, {-0.5, 80.5}})
        EXPECT_EQ(shownAt(image, p.x, p.y), 0xff000000) << p.x << ", " << p.y;
    for (const Point p : {Point{-1.5, 40}, {101.5, 40}, {50, -1.5}, {50, 81.5}})
        EXPECT_EQ(shownAt(image, p.x, p.y), around) << p.x << ", " << p.y;

    view.setSelection({60, 50, -30, -30});
    image = grabbed();
    const auto mixed = [](QRgb below, double over, double opacity) {
        const auto part = [&](int v) {
            return int(std::lround(v * (1 - opacity) + 255 * over * opacity));
        };
        return qRgb(part(qRed(below)), part(qGreen(below)), part(qBlue(below)));
    };
    const auto expectNear = [&](double x, double y, QRgb wanted) {
        const QRgb is = shownAt(image, x, y);
        EXPECT_NEAR(qRed(is), qRed(wanted), 2) << x << ", " << y;
        EXPECT_NEAR(qGreen(is), qGreen(wanted), 2) << x << ", " << y;
        EXPECT_NEAR(qBlue(is), qBlue(wanted), 2) << x << ", " << y;
    };
    expectNear(45, 35, kRed);
    expectNear(10, 35, mixed(kRed, 0.3, 0.5));
    // The border lies inside the selection: one pixel and half of the next.
    expectNear(30.5, 35, mixed(kRed, 1, 0.9));
    expectNear(31.25, 35, mixed(kRed, 1, view.devicePixelRatioF() == 2 ? 0.9 : 0.45));
    expectNear(32.25, 35, kRed);
    expectNear(29.5, 35, mixed(kRed, 0.3, 0.5));
    // The frame is drawn last and the surroundings of the picture are not dimmed.
    EXPECT_EQ(shownAt(image, -0.5, 40), 0xff000000);
    EXPECT_EQ(shownAt(image, -5, 40), around);
}

TEST_F(PictureView, ScrollingShowsWhatAFreshDrawingShows)
{
    const auto waves = drawing::Picture::fromBitmap(
        drawing::scaledBitmap(*support::picture("photo-96x64"), 1200, 800));
    for (const float scale : {0.63f, 0.8f, 1.3f, 5.3f, 80.0f}) {
        open(waves, scale);
        view.setSelection({570, 440, 50, 30});
        ASSERT_TRUE(waitFor([&] { return view.showsFinalPixels(); }));
        QTest::qWait(20);
        for (const QPoint step : {QPoint(7, 0), {0, -11}, {13, 29}}) {
            scroll.setScrollPosition(scroll.scrollPosition() + step);
            QApplication::processEvents();
        }
        // On a dense screen the platform answers only the upper left part of the window.
        QImage onScreen = scroll.screen()->grabWindow(scroll.winId()).toImage();
        onScreen.setDevicePixelRatio(1);
        const QPoint corner = view.mapTo(&scroll, QPoint()) * view.devicePixelRatio();
        QImage fresh = grabbed();
        fresh.setDevicePixelRatio(1);
        const QSize both = fresh.size().boundedTo(onScreen.size() - QSize(corner.x(), corner.y()));
        ASSERT_GT(both.width(), 400);
        EXPECT_EQ(onScreen.copy(QRect(corner, both)).convertToFormat(QImage::Format_RGB32),
                  fresh.copy(QRect(QPoint(), both)))
            << scale;
    }
}

TEST_F(PictureView, LooksRight)
{
    open(drawing::Picture::fromBitmap(support::picture("photo-96x64")), 1.25f);
    scroll.setFrameShape(QFrame::NoFrame);
    scroll.resize(150, 110);
    view.setSelection({20, 12, 50, 36});
    ASSERT_TRUE(waitFor([&] { return view.showsFinalPixels(); }));
    const QImage image = grabbed().convertToFormat(QImage::Format_RGBA8888);
    const auto bitmap =
        imaging::Bitmap::make(image.width(), image.height(), imaging::PixelFormat::Rgba8);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(bitmap->row(y), image.constScanLine(y), std::size_t(image.width()) * 4);
    const bool dense = view.devicePixelRatioF() == 2;
    support::expectGolden(dense ? "picture-view-selection-on-photo-dense"
                                : "picture-view-selection-on-photo",
                          *bitmap, {.largest = 2});
}

TEST_F(PictureView, ShowsPixelsAsTheyCome)
{
    open(plainPicture(100, 80, kRed));
    // A coarse preview of a quarter, then a finer part of it.
    view.showPixelsInRect(plain(5, 4, kBlue), {0, 0, 50, 40});
    view.showPixelsInRect(plain(10, 10, kYellow), {20, 20, 10, 10});
    expectShown({{5, 5, kBlue}, {25, 25, kYellow}, {30.5, 25, kBlue}, {50.5, 40.5, kRed}});
    // One that covers both takes their place.
    view.showPixelsInRect(plain(60, 50, kBlue), {0, 0, 60, 50});
    expectShown({{25, 25, kBlue}, {70, 60, kRed}});
    const auto source = showHeld(kGreen);
    // The window goes on; what it showed stays.
    EXPECT_FALSE(view.showsFinalPixels());
    expectShown({{25, 25, kBlue}, {70, 60, kRed}});
    source->letGo();
    ASSERT_TRUE(waitFor([&] { return view.showsFinalPixels(); }));
    expectShown({{25, 25, kGreen}, {70, 60, kGreen}});
    view.setPicture(nullptr);
    expectShown({{50, 40, view.palette().color(QPalette::Mid).rgb()}});
}

TEST_F(PictureView, NewerPixelsAreNeverReplacedByOlder)
{
    open(plainPicture(100, 80, kRed));
    view.showPixelsInRect(plain(5, 5, kYellow), {0, 0, 20, 20});
    const auto source = showHeld(kGreen);
    const PictureRef second = view.picture();
    // Of what comes after the picture whose pixels are still being made.
    for (int i = 0; i < 100; ++i)
        view.showPixelsInRect(plain(5, 5, i % 2 != 0 ? kBlue : kYellow), {10, 10, 30, 30});
    expectShown({{25, 25, kBlue}, {5, 5, kYellow}});
    source->letGo();
    ASSERT_TRUE(waitFor([&] { return shownAt(grabbed(), 70, 60) == kGreen; }));
    expectShown({{25, 25, kBlue}, {5, 5, kGreen}});
    EXPECT_FALSE(view.showsFinalPixels());
    // Setting the picture again means its own pixels.
    view.setPicture(second);
    EXPECT_TRUE(view.showsFinalPixels());
    expectShown({{25, 25, kGreen}});
}

TEST_F(PictureView, KeepsFewPartsAndLetsTheirPixelsGo)
{
    open(plainPicture(100, 80, kRed));
    std::vector<std::weak_ptr<const imaging::Bitmap>> shown;
    for (int i = 0; i < 40; ++i) {
        const auto pixels = plain(10, 10, kBlue);
        shown.push_back(pixels);
        view.showPixelsInRect(pixels, {double(i), 10, 10, 10});
    }
    const auto alive = [&] {
        return std::count_if(shown.begin(), shown.end(),
                             [](const auto& p) { return !p.expired(); });
    };
    EXPECT_LE(alive(), 12);
    EXPECT_EQ(shownAt(grabbed(), 45, 15), kBlue);
    view.setPicture(plainPicture(100, 80, kGreen));
    EXPECT_EQ(alive(), 0);
}

TEST_F(PictureView, AFastSequenceOfPicturesMovesAndEndsWithTheLast)
{
    open(plainPicture(100, 80, kRed));
    const auto first = showHeld(kGreen);
    const auto skipped = held(100, 80, kRed);
    const auto last = held(100, 80, kBlue);
    view.setPicture(drawing::Picture::fromDeferred(skipped, {100, 80}));
    view.setPicture(drawing::Picture::fromDeferred(last, {100, 80}));
    first->letGo();
    ASSERT_TRUE(waitFor([&] { return last->asked.load(); }));
    expectShown({{50, 40, kGreen}});
    EXPECT_FALSE(skipped->asked);
    last->letGo();
    ASSERT_TRUE(waitFor([&] { return view.showsFinalPixels(); }));
    expectShown({{50, 40, kBlue}});
    // A picture of another size does not wait for pixels it could never show.
    const auto other = held(50, 80, kGreen);
    view.setPicture(drawing::Picture::fromDeferred(other, {50, 80}));
    expectShown({{2, 78, 0xffffffff}});
    other->letGo();
    // Gone while others still work for it.
    const auto late = held(100, 80, kGreen);
    {
        editor::PictureScrollView closing;
        closing.pictureView().setPicture(drawing::Picture::fromDeferred(late, {100, 80}));
        ASSERT_TRUE(waitFor([&] { return late->asked.load(); }));
    }
    late->letGo();
}

TEST_F(PictureView, ComparesWithTheOriginalInPlace)
{
    open(plainPicture(100, 80, kRed));
    view.setShowsOriginal(true);
    expectShown({{50, 40, kRed}}); // nothing to compare with
    const auto source = held(100, 80, kGreen);
    view.setOriginal(drawing::Picture::fromDeferred(source, {100, 80}));
    ASSERT_TRUE(waitFor([&] { return source->asked.load(); }));
    expectShown({{50, 40, kRed}}); // has no pixels yet
    source->letGo();
    ASSERT_TRUE(waitFor([&] { return shownAt(grabbed(), 50, 40) == kGreen; }));
    // Results go on arriving behind it.
    view.showPixelsInRect(plain(5, 4, kBlue), {0, 0, 50, 40});
    expectShown({{25, 20, kGreen}});
    view.setShowsOriginal(false);
    expectShown({{25, 20, kBlue}, {75, 60, kRed}});

    // Twice the points: the same place. Another shape: whole, undistorted, in the middle.
    view.setShowsOriginal(true);
    view.setOriginal(plainPicture(200, 160, kYellow));
    expectShown({{1, 1, kYellow}, {99, 1, kYellow}});
    view.setOriginal(plainPicture(20, 40, kYellow));
    expectShown({{31, 2, kYellow}, {69, 78, kYellow}});
    const QImage image = grabbed();
    EXPECT_NE(shownAt(image, 28, 40), kYellow);
    EXPECT_NE(shownAt(image, 72, 40), kYellow);
}

TEST_F(PictureView, SplitsAlongALineThatIsDragged)
{
    open(plainPicture(300, 200, kRed));
    view.setOriginal(plainPicture(300, 200, kGreen));
    view.setSplit(0.5);
    expectShown({{140, 50, kGreen}, {160, 50, kRed}});
    for (const auto& [x, cursor] : {std::pair(150, 0), {145, 0}, {140, 4}})
        EXPECT_EQ(view.cursorTypeAt({double(x), 50}), cursor) << x;
    // From beside the line; the hand keeps its distance from it.
    press(153, 20);
    drag(100, 90);
    EXPECT_NEAR(*view.split(), 97 / 300.0, 0.002);
    expectShown({{90, 50, kGreen}, {104, 50, kRed}});
    drag(-500, 90);
    EXPECT_EQ(view.split(), 0);
    drag(203, 90);
    release(203, 90);
    EXPECT_NEAR(*view.split(), 200 / 300.0, 0.002);
    // The view's own events saw none of it; beside the line they do.
    EXPECT_TRUE(controller.calls.empty());
    EXPECT_FALSE(view.isSelected());
    EXPECT_EQ(view.pickPoint(), Point());
    dragFromTo({50, 50}, {80, 90});
    EXPECT_EQ(view.getSelection(), (Rect{50, 50, 30, 40}));

    view.setSplit(NAN);
    EXPECT_EQ(view.split(), 0.5);
    view.setSplit(7);
    EXPECT_EQ(view.split(), 1);
    view.setShowsOriginal(true);
    EXPECT_EQ(view.cursorTypeAt({299, 20}), 4); // no line to hold
    view.setShowsOriginal(false);
    view.setSplit({});
    EXPECT_EQ(shownAt(grabbed(), 10, 50), shownAt(grabbed(), 290, 50));
}

TEST_F(PictureView, ASplitDragRepaintsWhatChanges)
{
    const auto photo = drawing::Picture::fromBitmap(support::picture("photo-96x64"));
    open(photo, 4);
    view.setOriginal(plainPicture(96, 64, kGreen));
    view.setSplit(0.3);
    ASSERT_TRUE(waitFor([&] { return view.showsFinalPixels(); }));
    QTest::qWait(20);
    const auto onScreen = [&] {
        QApplication::processEvents();
        return scroll.screen()
            ->grabWindow(scroll.winId())
            .toImage()
            .convertToFormat(QImage::Format_RGB32);
    };
    for (const double fraction : {0.32, 0.7, 0.0, 1.0, 0.55}) {
        view.setSplit(fraction);
        const QImage kept = onScreen();
        view.update();
        EXPECT_EQ(kept, onScreen()) << fraction;
    }
}

TEST_F(PictureView, CentreHandleFollowsMouseAndKeys)
{
    controller.name = "CIFMirrorFilter";
    controller.mode = 1;
    open(plainPicture(300, 200), 1);
    EXPECT_FALSE(view.shownCenter());
    controller.pointing = 2;
    view.setPickPoint({150, 100});
    EXPECT_EQ(view.shownCenter(), (Point{150, 100}));
    expectShown({{150.2, 100.2, 0xffffffff}, {170, 100, kRed}});
    EXPECT_NE(shownAt(grabbed(), 157, 100), kRed);
    EXPECT_EQ(view.cursorTypeAt({152, 98}), 8);
    EXPECT_EQ(view.cursorTypeAt({180, 98}), 11);

    press(50, 60);
    EXPECT_EQ(view.cursorTypeAt({50, 60}), 9);
    drag(80, 90);
    release(80, 90);
    EXPECT_EQ(view.shownCenter(), (Point{80, 90}));
    expectShown({{80.2, 90.2, 0xffffffff}, {150.2, 100.2, kRed}});
    controller.take();
    QTest::keyClick(&view, Qt::Key_Left);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.pickPoint(), (Point{79, 100}));
    EXPECT_EQ(controller.center, (Point{79, 100}));
    EXPECT_THAT(controller.take(), ElementsAre("center", "apply", "center", "apply"));
    // Keys stop at the picture's side, and bring back what a drag took out.
    for (int i = 0; i < 20; ++i)
        QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.pickPoint(), (Point{79, 200}));
    press(80, 90);
    drag(340, 230);
    release(340, 230);
    QTest::keyClick(&view, Qt::Key_Right);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.pickPoint(), (Point{340, 229}));

    // One that was set goes along, whatever the pointing mode.
    controller.pointing = 1;
    EXPECT_FALSE(view.shownCenter());
    view.setCenterHandle(Point{30, 40});
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_EQ(view.centerHandle(), (Point{31, 40}));
    // The selection has the keys while there is one.
    view.setSelection({10, 10, 20, 20});
    controller.take();
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_TRUE(controller.calls.empty());
    view.setTouched(false);
    view.setCenterHandle(Point{1e300, -1e300});
    expectShown({{3, 100, kRed}});
    view.setCenterHandle(Point{NAN, 3});
    EXPECT_FALSE(view.centerHandle());
}

TEST_F(PictureView, TellsOnceWhatIsInSight)
{
    open(plainPicture(2000, 1500));
    QApplication::processEvents();
    QSignalSpy told(&view, &CIFImageEditorView::sightDidChange);
    const auto expectTold = [&](int times, const char* when) {
        QApplication::processEvents();
        EXPECT_EQ(told.size(), times) << when;
        told.clear();
    };
    expectTold(0, "nothing happens");
    view.setScaleFactor(2);
    view.setScaleFactor(3);
    scroll.setScrollPosition({10, 10});
    EXPECT_EQ(told.size(), 0);
    expectTold(1, "all of that");
    EXPECT_DOUBLE_EQ(view.density(), 3 * view.devicePixelRatioF());
    EXPECT_DOUBLE_EQ(view.visiblePart().x, 10 / 3.0);
    view.setSelection({1, 2, 3, 4});
    view.setPicture(plainPicture(2000, 1500, kGreen));
    expectTold(0, "a picture of the same size stays where the former was");
    EXPECT_EQ(scroll.scrollPosition(), QPoint(10, 10));
    EXPECT_EQ(view.getScaleFactor(), 3);
    scroll.resize(450, 380);
    expectTold(1, "resized");
    view.setPicture(plainPicture(20, 10));
    view.updateSize();
    expectTold(1, "another size");
    // Nothing but the picture counts as seen.
    view.setScaleFactor(1);
    EXPECT_EQ(view.visiblePart(), (Rect{0, 0, 20, 10}));
}

TEST_F(PictureView, TellsScreenReadersWhatItShows)
{
    open(plainPicture(300, 200), 0.5f);
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&view);
    ASSERT_NE(accessible, nullptr);
    const auto expectSaid = [&](const char* more) {
        EXPECT_EQ(accessible->text(QAccessible::Description).toStdString(),
                  std::string("300 by 200 points, zoom 50 percent") + more);
    };
    EXPECT_EQ(accessible->text(QAccessible::Name), "Picture");
    expectSaid("");
    view.setSelection({160, 110, -60, -60});
    expectSaid("; selection of 60 by 60 at 100, 50");
    view.setTouched(false);
    view.setCenterHandle(Point{20, 30.5});
    view.setOriginal(plainPicture(300, 200));
    view.setSplit(0.25);
    expectSaid("; center at 20, 30.5; original left of 25 percent of the width");
    view.setShowsOriginal(true);
    expectSaid("; center at 20, 30.5; showing the original");
}

TEST_F(PictureView, SwitchesTheOpacityOfTheColourPanelOn)
{
    auto& panel = editor::ColorPanel::sharedColorPanel();
    panel.setShowsAlpha(false);
    editor::PictureScrollView another;
    EXPECT_TRUE(panel.dialog().testOption(QColorDialog::ShowAlphaChannel));
}

TEST_F(PictureView, SurvivesOddPictures)
{
    for (const PictureRef& picture :
         {PictureRef(), plainPicture(1, 1), plainPicture(5000, 1), plainPicture(1, 5000),
          drawing::Picture::fromBitmap(plain(3, 3, kRed), foundation::Size{1e9, 1e9}),
          drawing::Picture::fromBitmap(plain(3, 3, kRed), foundation::Size{})})
        for (const float scale : {0.02f, 1.0f, 80.0f}) {
            view.setPicture(picture);
            view.updateSize();
            view.setScaleFactor(scale);
            view.setSelection({-1e30, 2, 1e30, 5});
            view.rightMouseDown();
            (void)grabbed();
            dragFromTo({0, 0}, {1, 1});
            EXPECT_GE(view.getScaleFactor(), CIFImageEditorView::kSmallestScale);
            view.setTouched(false);
        }
}
