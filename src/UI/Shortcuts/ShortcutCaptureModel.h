#pragma once

#include "Gesture/ShortcutCapture.h"

#include <QPointer>
#include <QQuickItem>
#include <QStringList>

#include <functional>

namespace veltrin {

/// A key as the window system names it: the toolkit's key, the keyboard's own number for it, and the layout
/// in use.
struct PressedKey {
    int key = 0;
    quint32 scanCode = 0;
    unsigned group = 0;
};
/// The product's code of a key; `KeyCode::unknown` for one without.
using KeyCodeOf = std::function<qint64(const PressedKey&)>;

/// For a window system that numbers its keys in a way of its own: by what the key means, where its Latin
/// letter or name tells.
qint64 keyCodeByMeaning(const PressedKey& key);

/// What a settings row with one combination shows and does; the state itself is a `ShortcutCustomizer`.
class ShortcutCaptureModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool recording READ isRecording NOTIFY changed)
    /// The combination key by key, as this desktop writes on its keys.
    Q_PROPERTY(QStringList keys READ keys NOTIFY changed)
    Q_PROPERTY(QString captureHint READ captureHint CONSTANT)
    QML_ELEMENT
    QML_UNCREATABLE("Made for a row of the settings")
public:
    ShortcutCaptureModel(Preferences& preferences, const ShortcutRow& row,
                         KeyCodeOf keyCodeOf = keyCodeByMeaning);

    bool isRecording() const { return customizer_.isRecording(); }
    QStringList keys() const;
    QString captureHint() const { return customizer_.row().captureHint.value_or(QString()); }

    Q_INVOKABLE void beginCapture() { customizer_.beginRecording(); }
    Q_INVOKABLE void endCapture() { customizer_.endRecording(); }
    Q_INVOKABLE void restoreDefaults() { customizer_.restoreDefaults(); }
    /// A key-down while it is recording. Modifiers alone are no key.
    void keyDown(const PressedKey& key, Qt::KeyboardModifiers modifiers);

Q_SIGNALS:
    void changed();

private:
    ShortcutCustomizer customizer_;
    KeyCodeOf keyCodeOf_;
    Subscription subscription_;
};

/// Takes every key-down of its window while it has the focus and its model is recording, Tab and Escape
/// included, and gives it to the model. Losing the focus ends the recording.
class ShortcutKeyCatcher : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(veltrin::ShortcutCaptureModel* model READ model WRITE setModel NOTIFY modelChanged)
    QML_ELEMENT
public:
    explicit ShortcutKeyCatcher(QQuickItem* parent = nullptr) : QQuickItem(parent) {}

    ShortcutCaptureModel* model() const { return model_; }
    void setModel(ShortcutCaptureModel* model);

Q_SIGNALS:
    void modelChanged();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool isRecording() const { return model_ != nullptr && model_->isRecording(); }

    QPointer<ShortcutCaptureModel> model_;
};

}  // namespace veltrin
