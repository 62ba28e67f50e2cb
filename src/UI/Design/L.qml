pragma Singleton
import QtQuick
import Veltrin

/// The interface's two languages, at the point of use: `L.t("设置", "Settings")`. Bindings follow the setting, since
/// the function reads a property. The only singleton written in QML: two would each wait for the other.
QtObject {
    readonly property bool english: VtLook.english

    function t(zh: string, en: string): string { return english ? en : zh }
}
