#include "tests/support/browser.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

Browser::Browser() = default;

Browser::~Browser()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    call({}, "Browser.close", {}); // with all its processes
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

bool Browser::start()
{
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", m_folder.path());
    m_process.setProcessEnvironment(environment);
    m_process.start("chromium",
                    {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                     "--disable-background-networking", "--disable-component-update", "--disable-sync",
                     "--user-data-dir=" + m_folder.filePath("profile"), "--remote-debugging-port=0"});
    QByteArray said;
    const QRegularExpression address("DevTools listening on (ws://\\S+)");
    QRegularExpressionMatch match;
    const bool listens = QTest::qWaitFor(
        [&] {
            said += m_process.readAllStandardError();
            match = address.match(QString::fromUtf8(said));
            return match.hasMatch() || m_process.state() == QProcess::NotRunning;
        },
        waitMs);
    if (!listens || !match.hasMatch()) {
        m_what = "the browser did not start: " + QString::fromUtf8(said);
        return false;
    }
    QObject::connect(&m_socket, &QWebSocket::textMessageReceived, &m_socket,
                     [this](const QString& text) { onMessage(text); });
    QObject::connect(&m_process, &QProcess::readyReadStandardError, &m_process,
                     [this] { m_process.readAllStandardError(); });
    m_socket.open(QUrl(match.captured(1)));
    return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, waitMs);
}

void Browser::onMessage(const QString& text)
{
    const QJsonObject message = QJsonDocument::fromJson(text.toUtf8()).object();
    if (message.contains("id")) {
        m_answers.insert(message["id"].toInt(), message);
        return;
    }
    for (const auto& page : m_pages) {
        if (page->m_session == message["sessionId"].toString() && page->onEvent)
            page->onEvent(message["method"].toString(), message["params"].toObject());
    }
}

QJsonObject Browser::call(const QString& session, const QString& method, const QJsonObject& parameters)
{
    const int id = ++m_calls;
    QJsonObject message{{"id", id}, {"method", method}, {"params", parameters}};
    if (!session.isEmpty())
        message.insert("sessionId", session);
    m_socket.sendTextMessage(QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)));
    m_socket.flush();
    QElapsedTimer waited;
    waited.start();
    while (!m_answers.contains(id) && waited.elapsed() < waitMs &&
           m_socket.state() == QAbstractSocket::ConnectedState)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    const QJsonObject answer = m_answers.take(id);
    if (answer.contains("error") || answer.isEmpty()) {
        m_what = method + ": " + QString::fromUtf8(QJsonDocument(answer).toJson());
        return QJsonObject();
    }
    QJsonObject result = answer["result"].toObject();
    result.insert("done", true);
    return result;
}

Browser::Page* Browser::open(const QString& url, const QSize& size)
{
    auto page = std::make_unique<Page>();
    page->m_browser = this;
    page->m_target =
        call({}, "Target.createTarget", {{"url", "about:blank"}, {"newWindow", true}})["targetId"].toString();
    page->m_session =
        call({}, "Target.attachToTarget", {{"targetId", page->m_target}, {"flatten", true}})["sessionId"]
            .toString();
    if (page->m_session.isEmpty())
        return nullptr;
    m_pages.push_back(std::move(page));
    Page* opened = m_pages.back().get();
    opened->call("Page.enable");
    opened->call("Runtime.enable");
    opened->resize(size);
    return opened->go(url) ? opened : nullptr;
}

void Browser::closeAll()
{
    for (const auto& page : m_pages)
        page->close();
    m_pages.clear();
}

QJsonObject Browser::Page::call(const QString& method, const QJsonObject& parameters)
{
    return m_browser->call(m_session, method, parameters);
}

QJsonValue Browser::Page::evaluate(const QString& expression)
{
    const QJsonObject answer = call(
        "Runtime.evaluate", {{"expression", expression}, {"returnByValue", true}, {"awaitPromise", true}});
    if (answer.contains("exceptionDetails"))
        m_browser->m_what = QString::fromUtf8(QJsonDocument(answer["exceptionDetails"].toObject()).toJson());
    return answer["result"].toObject()["value"];
}

bool Browser::Page::becomes(const QString& expression)
{
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < waitMs) {
        if (evaluate(expression).toBool())
            return true;
        QTest::qWait(20);
    }
    m_browser->m_what = "never true: " + expression;
    return false;
}

bool Browser::Page::go(const QString& url)
{
    // Elsewhere first: another fragment alone would be the same page.
    return !call("Page.navigate", {{"url", "about:blank"}}).isEmpty() &&
           becomes("location.href === 'about:blank'") &&
           call("Page.navigate", {{"url", url}})["errorText"].toString().isEmpty() &&
           becomes("location.href !== 'about:blank' && document.readyState === 'complete'");
}

bool Browser::Page::reload()
{
    evaluate("window.isOld = true");
    return !call("Page.reload").isEmpty() && becomes("!window.isOld && document.readyState === 'complete'");
}

bool Browser::Page::resize(const QSize& size, qreal dotsPerPixel, bool isPhone)
{
    return !call("Emulation.setDeviceMetricsOverride", {{"width", size.width()},
                                                        {"height", size.height()},
                                                        {"deviceScaleFactor", dotsPerPixel},
                                                        {"mobile", isPhone}})
                .isEmpty() &&
           !call("Emulation.setTouchEmulationEnabled", {{"enabled", isPhone}}).isEmpty();
}

bool Browser::Page::mouse(const char* type, const QPointF& pos)
{
    const bool isMove = qstrcmp(type, "mouseMoved") == 0;
    return !call("Input.dispatchMouseEvent", {{"type", type},
                                              {"x", pos.x()},
                                              {"y", pos.y()},
                                              {"button", isMove ? "none" : "left"},
                                              {"buttons", qstrcmp(type, "mouseReleased") == 0 ? 0 : 1},
                                              {"clickCount", isMove ? 0 : 1}})
                .isEmpty();
}

bool Browser::Page::click(const QPointF& pos)
{
    return mouse("mousePressed", pos) && mouse("mouseReleased", pos);
}

bool Browser::Page::touch(const char* type, const QPointF& pos)
{
    QJsonArray points;
    if (qstrcmp(type, "touchEnd") != 0)
        points.append(QJsonObject{{"x", pos.x()}, {"y", pos.y()}});
    return !call("Input.dispatchTouchEvent", {{"type", type}, {"touchPoints", points}}).isEmpty();
}

bool Browser::Page::key(const QString& name)
{
    QJsonObject key{{"type", "keyDown"}, {"key", name}};
    if (name.size() == 1)
        key.insert("text", name);
    const bool down = !call("Input.dispatchKeyEvent", key).isEmpty();
    return down && !call("Input.dispatchKeyEvent", {{"type", "keyUp"}, {"key", name}}).isEmpty();
}

QImage Browser::Page::screenshot()
{
    const QByteArray data = call("Page.captureScreenshot", {{"format", "png"}})["data"].toString().toLatin1();
    return QImage::fromData(QByteArray::fromBase64(data), "png");
}

void Browser::Page::close()
{
    if (!m_target.isEmpty())
        m_browser->call({}, "Target.closeTarget", {{"targetId", m_target}});
    m_target.clear();
}
