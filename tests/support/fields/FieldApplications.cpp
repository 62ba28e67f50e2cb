#include "support/fields/FieldApplications.h"

#include "Platform/Linux/AtSpi/AtSpiElement.h"
#include "support/desktop/Waiting.h"

#include <QDir>
#include <QFile>

#include <stdexcept>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double startSeconds = 60;  // a browser's or an office's first start on a machine that also builds

void writeFile(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

// No network, no questions, no caret that blinks.
constexpr char firefoxPreferences[] = R"(
user_pref("app.normandy.enabled", false);
user_pref("app.update.enabled", false);
user_pref("browser.aboutwelcome.enabled", false);
user_pref("browser.newtabpage.enabled", false);
user_pref("browser.safebrowsing.malware.enabled", false);
user_pref("browser.safebrowsing.phishing.enabled", false);
user_pref("browser.sessionstore.resume_from_crash", false);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("browser.startup.homepage_override.mstone", "ignore");
user_pref("browser.translations.enable", false);
user_pref("datareporting.healthreport.uploadEnabled", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("datareporting.policy.dataSubmissionPolicyBypassNotification", true);
user_pref("extensions.getAddons.cache.enabled", false);
user_pref("extensions.update.enabled", false);
user_pref("media.gmp-manager.updateEnabled", false);
user_pref("network.captive-portal-service.enabled", false);
user_pref("network.connectivity-service.enabled", false);
user_pref("security.sandbox.content.level", 0);
user_pref("services.settings.server", "http://127.0.0.1:9/");
user_pref("toolkit.telemetry.enabled", false);
user_pref("toolkit.telemetry.unified", false);
user_pref("ui.caretBlinkTime", 0);
)";

constexpr char officePreferences[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry" xmlns:xs="http://www.w3.org/2001/XMLSchema"
 xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="ShowTipOfTheDay" oor:op="fuse">
<value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="ShowDonation" oor:op="fuse">
<value>false</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="LastTimeDonateShown" oor:op="fuse">
<value>4000000000</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="LastTimeGetInvolvedShown" oor:op="fuse">
<value>4000000000</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="WhatsNew" oor:op="fuse">
<value>false</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="ooSetupLastVersion" oor:op="fuse">
<value>7.4</value></prop></item>
<item oor:path="/org.openoffice.Office.Linguistic/SpellChecking"><prop oor:name="IsSpellAuto" oor:op="fuse">
<value>false</value></prop></item>
</oor:items>
)";

}  // namespace

AXElementRef focusedElement(Accessibility& accessibility, qint32 process) {
    const auto result = accessibility.copyAttributeValue(accessibility.applicationElement(process),
                                                         AXAttribute::focusedUIElement);
    const auto* element = std::get_if<AXElementRef>(&result.value);
    return result.ok() && element ? *element : nullptr;
}

QStringList chromiumCommand(RealDesktop& desktop, const QString& url) {
    // As root it has no sandbox.
    return {u"chromium"_s,
            u"--no-sandbox"_s,
            u"--user-data-dir="_s + desktop.file(u"chromium"_s),
            u"--no-first-run"_s,
            u"--no-default-browser-check"_s,
            u"--disable-gpu"_s,
            u"--disable-quic"_s,
            u"--disable-background-networking"_s,
            u"--disable-component-update"_s,
            u"--disable-sync"_s,
            u"--disable-dev-shm-usage"_s,
            u"--password-store=basic"_s,
            u"--window-size=700,640"_s,
            u"--window-position=40,40"_s,
            u"--app="_s + url};
}

FieldApplication::FieldApplication(const QString& name, ExternalTextDesktop& text, RealDesktop& desktop,
                                   AtSpiProbe& probe)
    : name_(name), text_(text), desktop_(desktop), probe_(probe) {
    if (name == u"mousepad") {
        program_ = std::make_unique<Program>(Program::mousepad(desktop));
        addProbed();
    } else if (name == u"gedit") {
        program_ = std::make_unique<Program>(Program::gedit(desktop));
        addProbed();
    } else if (name == u"gnome-text-editor") {
        program_ = std::make_unique<Program>(Program::gnomeTextEditor(desktop));
        addProbed();
    } else if (name == u"qt-widgets") {
        startControlled(u"veltrin_test_editor"_s);
    } else if (name == u"qt-quick") {
        startControlled(u"veltrin_quick_editor"_s);
    } else if (name == u"chromium") {
        startChromium();
    } else if (name == u"firefox") {
        startFirefox();
    } else if (name == u"libreoffice-writer") {
        startWriter();
    } else if (name == u"xterm" || name == u"lxterminal") {
        startTerminal();
    } else if (name == u"zenity") {
        begin({u"zenity"_s, u"--scale"_s, u"--text"_s, u"A plain window without a field for text"_s});
    } else {
        throw std::runtime_error("no such application: " + name.toStdString());
    }
}

qint32 FieldApplication::process() const {
    return desktop_.x().processOf(window());
}

void FieldApplication::begin(const QStringList& command, const QString& windowClass,
                             const Environment& extra) {
    program_ = std::make_unique<Program>(desktop_, command, extra);
    program_->waitForWindow(startSeconds, windowClass);
}

void FieldApplication::addProbed() {
    fields_[u"text"_s] = std::make_unique<ProbedFieldDriver>(probe_, [this] {
        AXElementRef element;
        waitUntil(20, [&] {
            return (element = focusedElement(text_.accessibility, process())) != nullptr &&
                   text_.accessibility.inspect(element).isEditable;
        });
        const auto* object = dynamic_cast<const AtSpi::AtSpiElement*>(element.get());
        if (!object) throw std::runtime_error("no focused field in " + name_.toStdString());
        return probe_.fieldAt(object->address().bus, object->address().path);
    });
}

void FieldApplication::startControlled(const QString& program) {
    const QString socket = desktop_.file(program + u".socket"_s);
    QFile::remove(socket);
    begin({QStringLiteral(VELTRIN_BINARY_DIR "/bin/") + program, u"--control"_s, socket});
    for (const QString& field : {u"text"_s, u"line"_s, u"password"_s})
        fields_[field] = std::make_unique<ControlledField>(socket, field);
}

void FieldApplication::addPage() {
    for (const QString& field :
         {u"textarea"_s, u"input"_s, u"editable"_s, u"password"_s, u"readonly"_s, u"page"_s}) {
        fields_[field] = std::make_unique<PageField>(*page_, field);
        fields_[field]->state();
    }
}

void FieldApplication::startChromium() {
    page_ = std::make_unique<PageServer>();
    begin(chromiumCommand(desktop_, page_->url()), u"chromium"_s);
    addPage();
}

void FieldApplication::startFirefox() {
    page_ = std::make_unique<PageServer>();
    const QString profile = desktop_.file(u"firefox"_s);
    writeFile(profile + u"/user.js"_s, firefoxPreferences);
    begin({u"firefox-esr"_s, u"--no-remote"_s, u"--profile"_s, profile, u"--width"_s, u"800"_s, u"--height"_s,
           u"720"_s, page_->url()},
          u"firefox-esr"_s, {{u"MOZ_CRASHREPORTER_DISABLE"_s, u"1"_s}});
    addPage();
}

void FieldApplication::startWriter() {
    const QString profile = desktop_.file(u"office"_s);
    writeFile(profile + u"/user/registrymodifications.xcu"_s, officePreferences);
    begin({u"soffice"_s, u"-env:UserInstallation=file://"_s + profile, u"--norestore"_s, u"--nologo"_s,
           u"--nofirststartwizard"_s, u"--writer"_s},
          u"libreoffice-writer"_s, {{u"SAL_USE_VCLPLUGIN"_s, u"gtk3"_s}});
    addProbed();
}

void FieldApplication::startTerminal() {
    auto field = std::make_unique<TerminalField>(desktop_);
    const QString script = desktop_.file(u"terminal.sh"_s);
    writeFile(script, field->command().last().toUtf8());
    if (name_ == u"xterm") {
        begin({u"xterm"_s, u"-u8"_s, u"-fa"_s, u"Monospace"_s, u"-e"_s, u"sh"_s, script}, u"xterm"_s);
    } else {
        begin({u"lxterminal"_s, u"--no-remote"_s, u"-e"_s, u"sh "_s + script}, u"lxterminal"_s);
    }
    fields_[u"text"_s] = std::move(field);
}

}  // namespace veltrin
