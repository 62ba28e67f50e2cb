#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace veltrin {

/// What the whole interface depends on: its language, and how light or dark it is. One object feeds all
/// windows; its owner keeps it true, and elements bind to it.
class VtLook : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool english MEMBER english_ NOTIFY englishChanged)
    Q_PROPERTY(bool windowDark MEMBER windowDark_ NOTIFY windowDarkChanged)
    Q_PROPERTY(bool popupDark MEMBER popupDark_ NOTIFY popupDarkChanged)
    /// The user asked for less motion: what moves appears at its end.
    Q_PROPERTY(bool reducedMotion MEMBER reducedMotion_ NOTIFY reducedMotionChanged)
    QML_ELEMENT
    QML_SINGLETON
public:
    /// Not to be made by default: QML would make one of its own instead of asking `create`.
    explicit VtLook(QObject* parent) : QObject(parent) {}

    /// The object that the engine's windows shall see; it must outlive the engine. Without a call they see a
    /// light and Chinese one.
    static void install(QQmlEngine& engine, VtLook& look);
    static VtLook* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    bool english() const { return english_; }
    bool windowDark() const { return windowDark_; }
    bool popupDark() const { return popupDark_; }
    bool reducedMotion() const { return reducedMotion_; }
    void setEnglish(bool value) { set(english_, value, &VtLook::englishChanged); }
    void setWindowDark(bool value) { set(windowDark_, value, &VtLook::windowDarkChanged); }
    void setPopupDark(bool value) { set(popupDark_, value, &VtLook::popupDarkChanged); }
    void setReducedMotion(bool value) { set(reducedMotion_, value, &VtLook::reducedMotionChanged); }

Q_SIGNALS:
    void englishChanged();
    void windowDarkChanged();
    void popupDarkChanged();
    void reducedMotionChanged();

private:
    void set(bool& member, bool value, void (VtLook::*changed)()) {
        if (member == value) return;
        member = value;
        (this->*changed)();
    }

    bool english_ = false;
    bool windowDark_ = false;
    bool popupDark_ = false;
    bool reducedMotion_ = false;
};

}  // namespace veltrin
