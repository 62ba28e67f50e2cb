#pragma once

#include "Foundation/Lifetime.h"

#include <QCoro/QCoroTask>
#include <QString>
#include <QUrl>

#include <functional>
#include <vector>

namespace veltrin {

class Preferences;

/// The addresses by which a browser hands a login back: "veltrin://auth" with a `code` or a `token`. Anything
/// else that is opened is passed over. An address comes from any web page and is believed in nothing but its
/// two items. Main thread.
class AuthLinks {
public:
    /// The account; without it a code leads nowhere, and a token waits in the preferences.
    struct Account {
        std::function<QCoro::Task<void>(QString code)> exchangeCode;
        std::function<QCoro::Task<void>(QString token)> restoreSession;
        std::function<bool()> isAuthenticated;
    };

    AuthLinks(Preferences& preferences, std::function<void()> showMainWindow)
        : preferences_(preferences), showMainWindow_(std::move(showMainWindow)) {}

    /// Each address in its order; returns at once.
    void open(const std::vector<QUrl>& urls);

    Account account;

private:
    QCoro::Task<void> logIn(QString code);
    QCoro::Task<void> restore(QString token);
    void finish();

    Preferences& preferences_;
    std::function<void()> showMainWindow_;
    Lifetime lifetime_;
};

}  // namespace veltrin
