// A button that shows a colour and, while it is active, takes the one of the shared colour panel.
#pragma once

#include "platform/foundation/Color.h"

#include <QAbstractButton>

#include <optional>

class QColorDialog;

namespace editor {

class ColorWell final : public QAbstractButton {
    Q_OBJECT

public:
    explicit ColorWell(QWidget* parent = nullptr);

    const std::optional<foundation::Color>& color() const { return _color; }
    // Sends no action.
    void setColor(const std::optional<foundation::Color>& color);

    // One well at a time is active; a click makes it so and shows the panel, another one ends it.
    bool isActive() const;
    void activate();
    void deactivate();

    int tag = 0;

    QSize sizeHint() const override;

Q_SIGNALS:
    // The user asked for the colour it starts with.
    void resetAction();
    // A colour was dropped on the well.
    void colorDropped(const foundation::Color& color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::optional<foundation::Color> _color;
};

// The one colour panel, with opacity.
class ColorPanel final : public QObject {
    Q_OBJECT

public:
    static ColorPanel& sharedColorPanel();
    foundation::Color color() const;
    void setColor(const foundation::Color& color);
    // setShowsAlpha:
    void setShowsAlpha(bool shows);
    void orderFront(QWidget* owner);
    void close();
    QColorDialog& dialog();

Q_SIGNALS:
    // changeColor: — by the user.
    void colorDidChange(const foundation::Color& color);
};

} // namespace editor
