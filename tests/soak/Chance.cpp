#include "soak/Chance.h"

#include <QStringList>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr qsizetype largeContent = 1536 * 1024;
const QString secretHint = u"x-kde-passwordManagerHint"_s;

QByteArray picture() {
    return "\x89PNG\r\n\x1A\n" + QByteArray(3000, '\7');
}

}  // namespace

QString Chance::words(int count, Words kind) {
    static const QStringList plain{u"ab"_s,  u"tail"_s, u"Grüße"_s, u"naïve"_s, u"中文"_s,
                                   u"мир"_s, u"1,5"_s,  u"<b>"_s,   u"a&b"_s,   u"\"so\""_s};
    static const QStringList hard{u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s, u"\U0001F600"_s,
                                  u"e\u0301t"_s, u"\U0001F1E9\U0001F1EA"_s, u"\U00020000"_s};
    QString text;
    for (int i = 0; i < count; ++i) {
        const QStringList& list = percent(30) && kind.mayBeHard ? hard : plain;
        if (i > 0) text += kind.mayBreak && percent(15) ? u'\n' : u' ';
        text += list[below(static_cast<int>(list.size()))];
    }
    return text;
}

QString UsersContent::told() const {
    if (isSilent) return u"something whose owner never answers"_s;
    return offered.contents.isEmpty() ? u"nothing"_s : offered.contents.keys().join(u' ');
}

UsersContent randomContent(Chance& chance) {
    UsersContent content;
    const int kind = chance.below(10);
    if (kind == 0) return content;
    if (kind == 1) {
        content.offered.contents[u"image/png"_s] = picture();
        return content;
    }
    content.text = u"the user's "_s + chance.words(3, {});
    if (kind == 2) {
        while (content.text->size() < largeContent / 4)
            *content.text += u" 1.5 megabytes 中文 \U0001F600"_s.repeated(1000);
    }
    content.offered = ClipboardSnapshot::ofText(*content.text);
    if (kind == 3) {
        content.isSecret = true;
        content.offered.contents[secretHint] = "secret";
    } else if (kind < 7) {
        content.offered.contents[u"text/html"_s] = "<b>" + content.text->toUtf8() + "</b>";
        content.offered.contents[u"image/png"_s] = picture();
        content.offered.contents[u"application/x-of-somebody"_s] = QByteArray("\0\1\2\0", 4);
        if (kind == 4) content.offered.contents[u"application/x-large"_s] = QByteArray(largeContent, 'x');
    }
    return content;
}

UsersContent randomContentOfAnyOwner(Chance& chance) {
    const int kind = chance.below(10);
    if (kind > 1) return randomContent(chance);
    UsersContent content;
    if (kind == 0) {
        content.isSilent = true;
        return content;
    }
    const QByteArray files = "file:///home/somebody/a%20letter.txt\r\nfile:///home/somebody/b.png\r\n";
    content.text = u"/home/somebody/a letter.txt\n/home/somebody/b.png"_s;
    content.offered = ClipboardSnapshot::ofText(*content.text);
    content.offered.contents[u"text/uri-list"_s] = files;
    content.offered.contents[u"x-special/gnome-copied-files"_s] = "copy\n" + files;
    return content;
}

QString quoted(const QString& text) {
    constexpr qsizetype most = 400;
    QString shown = text.left(most);
    shown.replace(u'\n', u"\\n"_s);
    return u"“%1”%2"_s.arg(shown, text.size() > most ? u" (%1 units)"_s.arg(text.size()) : QString());
}

}  // namespace veltrin
