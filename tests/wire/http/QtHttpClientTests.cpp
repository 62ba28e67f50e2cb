#include "Platform/Linux/QtHttpClient.h"
#include "support/service/EventLoopRunner.h"
#include "support/service/ModelService.h"
#include "support/service/ServiceBehaviours.h"

#include <QTcpServer>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;

class QtHttpClientTest : public testing::Test {
protected:
    HttpRequest request(const QString& path = u"/v1/x"_s, double timeout = 5) const {
        HttpRequest request;
        request.url = QUrl(service.url(path));
        request.method = "POST";
        request.headers.emplace_back("Content-Type", "application/json");
        request.body = R"({"a":1})";
        request.timeout = timeout;
        return request;
    }
    std::shared_ptr<Outcome<HttpResponse>> send(HttpRequest request) {
        return finish(client->data(std::move(request)));
    }

    /// The code of the UrlError a request ends with; 0 when it ends with an answer.
    int codeOf(HttpRequest request) {
        const auto outcome = send(std::move(request));
        if (!outcome->failure) return 0;
        try {
            std::rethrow_exception(outcome->failure);
        } catch (const UrlError& error) {
            description = error.errorDescription();
            return error.code();
        }
    }
    int codeFor(ServiceBehaviour behaviour, double timeout = 5) {
        service.enqueue(std::move(behaviour));
        return codeOf(request(u"/v1/chat/completions"_s, timeout));
    }

    ModelService service;
    std::unique_ptr<QtHttpClient> client = std::make_unique<QtHttpClient>();
    QString description;
};

TEST_F(QtHttpClientTest, sendsMethodPathQueryHeadersAndBodyAsGiven) {
    HttpRequest sent = request(u"/a%20b/models/x:generateContent?key=AIza%2B-_~!"_s);
    sent.headers.emplace_back("x-api-key", "k1");
    sent.headers.emplace_back("Authorization", "Bearer k2");
    sent.body = "{\"text\":\"你好\\u0000\"}";
    const auto outcome = send(sent);
    ASSERT_TRUE(outcome->value) << outcome->errorDescription().toStdString();
    ASSERT_EQ(service.requests().size(), 1U);
    const ServiceRequest got = service.requests().front();
    EXPECT_EQ(got.method, QByteArray("POST"));
    EXPECT_EQ(got.path, QByteArray("/a%20b/models/x:generateContent"));
    EXPECT_EQ(got.query, QByteArray("key=AIza%2B-_~!"));
    EXPECT_EQ(got.header("Content-Type"), QByteArray("application/json"));
    EXPECT_EQ(got.header("x-api-key"), QByteArray("k1"));
    EXPECT_EQ(got.header("Authorization"), QByteArray("Bearer k2"));
    EXPECT_EQ(got.header("Content-Length"), QByteArray::number(sent.body.size()));
    EXPECT_EQ(got.header("Host"), "127.0.0.1:" + QByteArray::number(service.port()));
    EXPECT_EQ(got.body, sent.body);
    for (const char* name : {"Content-Type", "x-api-key", "Authorization", "Content-Length", "Host"})
        EXPECT_EQ(got.headerCount(name), 1) << name;
    EXPECT_EQ(got.headerCount("Cookie"), 0);
    EXPECT_EQ(got.headerCount("Cache-Control"), 0);
}

TEST_F(QtHttpClientTest, getSendsNoBody) {
    HttpRequest get = request(u"/api/tags"_s);
    get.method = "GET";
    get.headers.clear();
    get.body.clear();
    ASSERT_TRUE(send(get)->value);
    const ServiceRequest got = service.requests().front();
    EXPECT_EQ(got.method, QByteArray("GET"));
    EXPECT_EQ(got.headerCount("Content-Length"), 0);
    EXPECT_EQ(got.headerCount("Content-Type"), 0);
}

TEST_F(QtHttpClientTest, anErrorStatusIsAnAnswerWithItsBody) {
    for (const int status : {400, 401, 403, 404, 407, 418, 429, 500, 503, 529}) {
        service.enqueue(answers::error(status, u"why"_s));
        const auto outcome = send(request(u"/v1/chat/completions"_s));
        ASSERT_TRUE(outcome->value) << status << ' ' << outcome->errorDescription().toStdString();
        EXPECT_EQ(outcome->value->status, status);
        EXPECT_TRUE(outcome->value->body.contains("why")) << status;
    }
    EXPECT_EQ(service.requests().size(), 10U) << "no status is retried";
}

TEST_F(QtHttpClientTest, aChallengeForAPasswordIsAnAnswerToo) {
    service.enqueue([](const ServiceRequest&) {
        ServiceAnswer answer;
        answer.status = 401;
        answer.headers.emplace_back("WWW-Authenticate", "Basic realm=\"x\"");
        answer.body = "no";
        return answer;
    });
    const auto outcome = send(request());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->status, 401);
    EXPECT_EQ(outcome->value->body, QByteArray("no"));
}

TEST_F(QtHttpClientTest, aStatusWithoutABodyIsAnAnswer) {
    service.enqueue(answers::plain(204, {}));
    const auto outcome = send(request());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->status, 204);
    EXPECT_TRUE(outcome->value->body.isEmpty());
}

TEST_F(QtHttpClientTest, bytesArriveUntouched) {
    service.enqueue(answers::garbage());
    const auto outcome = send(request());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->status, 200);
    EXPECT_EQ(outcome->value->body, answers::garbage()(ServiceRequest()).body);
}

TEST_F(QtHttpClientTest, aTricklingAnswerArrivesWhole) {
    service.enqueue(answers::trickling(16, 0.002, answers::plain(200, QByteArray(500, 'x'))));
    const auto outcome = send(request());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->body.size(), 500);
}

TEST_F(QtHttpClientTest, timesOutAWaitForTheFirstByte) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(codeFor(answers::silent(), 0.3), UrlError::timedOut);
    EXPECT_GE(clock.elapsed(), 295);
    EXPECT_LT(clock.elapsed(), 1500);
}

TEST_F(QtHttpClientTest, theDeadlineCoversTheWholeTripNotTheGapBetweenBytes) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(codeFor(answers::trickling(1, 0.01, answers::plain(200, QByteArray(10000, 'x'))), 0.4),
              UrlError::timedOut);
    EXPECT_GE(clock.elapsed(), 395);
    EXPECT_LT(clock.elapsed(), 1600);
}

TEST_F(QtHttpClientTest, theDeadlineCoversRedirectionsTogether) {
    service.setDefault(answers::slow(0.15, answers::redirect(307, "/again")));
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(codeOf(request(u"/a"_s, 0.4)), UrlError::timedOut);
    EXPECT_LT(clock.elapsed(), 1600);
    EXPECT_GE(service.requests().size(), 2U);
}

TEST_F(QtHttpClientTest, anAnswerInTimeIsNotCutByItsDeadline) {
    service.enqueue(answers::slow(0.2, answers::plain(200, "late")));
    const auto outcome = send(request(u"/a"_s, 2));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->body, QByteArray("late"));
}

TEST_F(QtHttpClientTest, noTimeMeansNoAnswer) {
    EXPECT_EQ(codeOf(request(u"/a"_s, 0)), UrlError::timedOut);
    EXPECT_EQ(codeOf(request(u"/a"_s, -1)), UrlError::timedOut);
}

TEST_F(QtHttpClientTest, aResetIsALostConnection) {
    EXPECT_EQ(codeFor(answers::reset()), UrlError::networkConnectionLost);
}

TEST_F(QtHttpClientTest, aCloseBeforeTheAnswerIsALostConnection) {
    EXPECT_EQ(codeFor(answers::closed()), UrlError::networkConnectionLost);
}

TEST_F(QtHttpClientTest, aBodyThatEndsEarlyIsALostConnection) {
    EXPECT_EQ(
        codeFor(answers::cutAfter(120, ServiceEnding::reset, answers::plain(200, QByteArray(5000, 'x')))),
        UrlError::networkConnectionLost);
    EXPECT_EQ(codeFor(answers::lengthOff(10, answers::plain(200, "short"))), UrlError::networkConnectionLost);
}

TEST_F(QtHttpClientTest, aBodyPastItsToldLengthIsCutThere) {
    service.enqueue(answers::lengthOff(-3, answers::plain(200, "0123456789")));
    const auto outcome = send(request());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->body, QByteArray("0123456"));
}

TEST_F(QtHttpClientTest, anotherProtocolIsALostConnection) {
    EXPECT_EQ(codeFor(answers::notHttp()), UrlError::networkConnectionLost);
}

TEST_F(QtHttpClientTest, aRequestIsSentOnceWhateverBecomesOfIt) {
    for (const auto& behaviour : {answers::reset(), answers::closed(), answers::notHttp()}) {
        client = std::make_unique<QtHttpClient>();
        service.forget();
        service.setDefault(behaviour);
        EXPECT_EQ(codeOf(request()), UrlError::networkConnectionLost);
        EXPECT_EQ(service.requests().size(), 1U);
    }
}

TEST_F(QtHttpClientTest, aClosedPortCannotBeConnectedTo) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    HttpRequest refused = request();
    refused.url.setPort(server.serverPort());
    server.close();
    EXPECT_EQ(codeOf(refused), UrlError::cannotConnectToHost);
}

TEST_F(QtHttpClientTest, anUnknownNameCannotBeFound) {
    HttpRequest unknown = request();
    unknown.url = QUrl(u"http://no-such-host.invalid/v1"_s);
    EXPECT_EQ(codeOf(unknown), UrlError::cannotFindHost);
}

TEST_F(QtHttpClientTest, takesHttpAddressesOnly) {
    const auto codeAt = [&](const QString& url) {
        HttpRequest sent = request();
        sent.url = QUrl(url);
        return codeOf(sent);
    };
    EXPECT_EQ(codeAt(u"file:///etc/hostname"_s), UrlError::unsupportedURL);
    EXPECT_EQ(codeAt(u"data:,x"_s), UrlError::unsupportedURL);
    EXPECT_EQ(codeAt(u"localhost:11434"_s), UrlError::unsupportedURL);
    EXPECT_EQ(codeAt(u"/v1/messages"_s), UrlError::badURL);
    EXPECT_EQ(codeAt(QString()), UrlError::badURL);
    EXPECT_EQ(codeAt(u"http://"_s), UrlError::badURL);
}

TEST_F(QtHttpClientTest, aHugeBodyIsRefused) {
    const qsizetype limit = 64 * 1024 * 1024;
    EXPECT_EQ(codeFor(answers::huge(limit + 1024 * 1024), 60), UrlError::badServerResponse);
    service.enqueue(answers::huge(8 * 1024 * 1024));
    const auto outcome = send(request(u"/a"_s, 60));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->body.size(), 8 * 1024 * 1024);
}

TEST_F(QtHttpClientTest, descriptionsNameNoAddressAndNoKey) {
    HttpRequest sent = request(u"/v1beta/models/x:generateContent?key=AIzaSecret"_s, 0.2);
    sent.headers.emplace_back("Authorization", "Bearer sk-secret");
    for (const auto& behaviour : {answers::silent(), answers::reset(), answers::huge(65 * 1024 * 1024)}) {
        service.enqueue(behaviour);
        EXPECT_NE(codeOf(sent), 0);
        EXPECT_FALSE(description.isEmpty());
        for (const auto& secret : {u"AIza"_s, u"sk-"_s, u"127.0.0.1"_s, u"v1beta"_s})
            EXPECT_FALSE(description.contains(secret)) << description.toStdString();
    }
}

TEST_F(QtHttpClientTest, followsARedirectionOnTheSameHost) {
    service.enqueue(answers::redirect(307, "/v2/x?y=1"));
    service.enqueue(answers::plain(200, "there"));
    HttpRequest sent = request();
    sent.headers.emplace_back("x-api-key", "k");
    const auto outcome = send(sent);
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->body, QByteArray("there"));
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].target, QByteArray("/v2/x?y=1"));
    EXPECT_EQ(requests[1].method, QByteArray("POST"));
    EXPECT_EQ(requests[1].body, sent.body);
    EXPECT_EQ(requests[1].header("x-api-key"), QByteArray("k"));
}

TEST_F(QtHttpClientTest, aFoundRedirectionOfAPostBecomesAGet) {
    service.enqueue(answers::redirect(302, "/elsewhere"));
    ASSERT_TRUE(send(request())->value);
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].method, QByteArray("GET"));
    EXPECT_TRUE(requests[1].body.isEmpty());
}

TEST_F(QtHttpClientTest, aRedirectionToAnotherHostIsAnsweredAsItIsSoThatNoKeyTravels) {
    ModelService other;
    service.enqueue(answers::redirect(307, other.url(u"/v1/x"_s).toUtf8()));
    HttpRequest sent = request();
    sent.headers.emplace_back("Authorization", "Bearer sk-secret");
    const auto outcome = send(sent);
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->status, 307);
    EXPECT_EQ(outcome->value->body, QByteArray("moved"));
    EXPECT_TRUE(other.requests().empty());
}

TEST_F(QtHttpClientTest, givesUpOnACircleOfRedirections) {
    service.setDefault(answers::redirect(307, "/round"));
    EXPECT_EQ(codeOf(request()), UrlError::httpTooManyRedirects);
    EXPECT_EQ(service.requests().size(), 21U);
}

TEST_F(QtHttpClientTest, aRedirectionWithoutAPlaceIsAnAnswer) {
    service.enqueue(answers::plain(302, "nowhere"));
    const auto outcome = send(request());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->status, 302);
}

TEST_F(QtHttpClientTest, keepsTheConnectionBetweenRequests) {
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(send(request())->value);
    EXPECT_EQ(service.requests().back().connection, 1);
}

TEST_F(QtHttpClientTest, usesAConnectionThatTheServerClosedInBetweenNoMore) {
    ASSERT_TRUE(send(request())->value);
    service.enqueue([](const ServiceRequest& asked) {
        ServiceAnswer answer = answers::plain(200, "bye")(asked);
        answer.ending = ServiceEnding::close;
        return answer;
    });
    ASSERT_TRUE(send(request())->value);
    ASSERT_TRUE(send(request())->value);
    EXPECT_EQ(service.requests().size(), 3U);
}

TEST_F(QtHttpClientTest, runsSeveralRequestsAtOnce) {
    service.setDefault(answers::slow(1, answers::plain(200, "x")));
    std::vector<std::shared_ptr<Outcome<HttpResponse>>> outcomes;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 5; ++i)
        outcomes.push_back(follow(client->data(request())));
    for (const auto& outcome : outcomes)
        EXPECT_TRUE(runUntil([&] { return outcome->finished(); }));
    EXPECT_LT(clock.elapsed(), 4500) << "one after the other takes five seconds";
    for (const auto& outcome : outcomes)
        EXPECT_TRUE(outcome->value);
}

TEST_F(QtHttpClientTest, mayGoWhileARequestIsUnderWay) {
    service.enqueue(answers::slow(0.2, answers::plain(200, "late")));
    const auto outcome = follow(client->data(request()));
    client.reset();
    ASSERT_TRUE(runUntil([&] { return outcome->finished(); }));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->body, QByteArray("late"));
    runFor(0.05);
}

TEST_F(QtHttpClientTest, mayGoBeforeItsTaskFails) {
    service.enqueue(answers::slow(0.1, answers::reset()));
    service.setDefault(answers::reset());
    const auto outcome = follow(client->data(request()));
    client.reset();
    ASSERT_TRUE(runUntil([&] { return outcome->finished(); }));
    EXPECT_TRUE(outcome->failedWith<UrlError>());
    runFor(0.05);
}

TEST_F(QtHttpClientTest, aTaskMayBeDropped) {
    service.enqueue(answers::slow(0.1, answers::plain(200, "x")));
    { const auto dropped = client->data(request()); }
    runFor(0.3);
    EXPECT_EQ(service.requests().size(), 1U);
}

TEST_F(QtHttpClientTest, leavesNoConnectionBehind) {
    ASSERT_TRUE(send(request())->value);
    EXPECT_TRUE(runUntil([&] { return service.openConnections() > 0; }, 3));
    client.reset();
    EXPECT_TRUE(runUntil([&] { return service.openConnections() == 0; }, 3));
}

TEST_F(QtHttpClientTest, usesNoProxyForTheOwnMachine) {
    ModelService proxy;
    qputenv("http_proxy", proxy.url().toUtf8());
    const auto outcome = send(request());
    HttpRequest far = request();
    far.url = QUrl(u"http://no-such-host.invalid/v1"_s);
    const auto throughProxy = send(far);
    qunsetenv("http_proxy");
    EXPECT_TRUE(outcome->value);
    EXPECT_EQ(service.requests().size(), 1U);
    EXPECT_TRUE(throughProxy->value) << "the desktop's proxy is used for other hosts";
    ASSERT_EQ(proxy.requests().size(), 1U);
    EXPECT_EQ(proxy.requests().front().target, QByteArray("http://no-such-host.invalid/v1"));
}

}  // namespace
}  // namespace veltrin
