// The fields of veltrin_quick_editor.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts

ApplicationWindow {
    width: 480
    height: 320
    visible: true
    title: "Quick Editor"

    ColumnLayout {
        anchors.fill: parent

        TextArea {
            objectName: "text"
            Accessible.name: "Text"
            Layout.fillWidth: true
            Layout.fillHeight: true
            focus: true
            persistentSelection: true
            selectByMouse: true
        }
        TextField {
            objectName: "line"
            Accessible.name: "Line"
            Layout.fillWidth: true
            persistentSelection: true
            selectByMouse: true
        }
    }
}
