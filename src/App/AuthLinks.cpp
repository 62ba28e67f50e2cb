#include "App/AuthLinks.h"

#include "Foundation/MVPLog.h"
#include "Platform/Preferences.h"

#include <QUrlQuery>

#include <utility>

namespace veltrin {
namespace {

const QString tokenKey = QStringLiteral("veltrin_auth_token");
const QString webAuthDoneKey = QStringLiteral("veltrin_web_auth_done");

bool isAuthLink(const QUrl& url) {
    return url.scheme() == u"veltrin" && url.host() == u"auth";
}

}  // namespace

void AuthLinks::open(const std::vector<QUrl>& urls) {
    for (const QUrl& url : urls) {
        if (!isAuthLink(url)) continue;
        const QUrlQuery query(url);
        const auto item = [&query](const QString& name) {
            return query.queryItemValue(name, QUrl::FullyDecoded);
        };
        if (const QString code = item(QStringLiteral("code")); !code.isEmpty()) {
            logIn(code);
        } else if (const QString token = item(QStringLiteral("token")); !token.isEmpty()) {
            preferences_.set(tokenKey, token);
            preferences_.set(webAuthDoneKey, true);
            restore(token);
        }
    }
}

QCoro::Task<void> AuthLinks::logIn(QString code) {
    if (!account.exchangeCode) {
        MVPLog::write("Auth link ignored: no account service");
        co_return;
    }
    const auto token = lifetime_.token();
    auto exchange = account.exchangeCode(std::move(code));
    co_await exchange;
    if (!token.alive()) co_return;
    preferences_.set(webAuthDoneKey, true);
    finish();
}

QCoro::Task<void> AuthLinks::restore(QString token) {
    if (!account.restoreSession) co_return;
    const auto alive = lifetime_.token();
    auto session = account.restoreSession(std::move(token));
    co_await session;
    if (alive.alive()) finish();
}

void AuthLinks::finish() {
    if (account.isAuthenticated && account.isAuthenticated()) showMainWindow_();
}

}  // namespace veltrin
