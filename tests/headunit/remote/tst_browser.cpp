#include "tests/support/browser.h"
#include "tests/support/process.h"

#include "headunit/shell/audiopages.h"

#include <QTcpServer>
#include <QTcpSocket>

using namespace headunit;

/// The unit in a real browser: opened, touched, shared, lost and found again.
class TestBrowser : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void launcherIsSeenDotForDot();
    void sixTabsAreTouched();
    void bandFollowsThePointer();
    void phoneTouchesScreenAndKeys();
    void hardKeysWorkByPointer();
    void hardKeysWorkByKeyboardAndScreenReader();
    void keyboardWorksTheUnitAndFocusIsTold();
    void inspectorStandsBesideTheUnit();
    void wrongTokenIsRefused();
    void foreignPageGetsNothing();
    void secondPageLooksUntilItTakesControl();
    void lookingPageControlsWhenTheOtherLeaves();
    void reloadControlsAgain();
    void unitThatHasGoneIsSaid_data();
    void unitThatHasGoneIsSaid();
    void connectionThatIsLostComesBack();
    void pageRunsUnderItsPolicyAndLoadsNothingElse();

private:
    bool startUnit();
    /// A page that shows the unit; null, and m_browser says what, when it doesn't come up.
    Browser::Page* openUnit(const QSize& size = QSize(1232, 664));
    /// The colours of a place of the unit's picture as the page has it, as a text.
    static QString colours(Browser::Page* page, const QRect& place);
    /// Waits until these are others.
    static bool changes(Browser::Page* page, const QRect& place, const QString& before);
    /// The notice over the picture; empty when there is none.
    static QString notice(Browser::Page* page);
    static bool becomesNotice(Browser::Page* page, const QString& part);
    /// What the unit says from the last listen() on. Events go on meanwhile: the browser's, and of what
    /// stands between it and the unit.
    bool hears(const QByteArray& words)
    {
        return QTest::qWaitFor([&] { return m_unit->output().mid(m_heard).contains(words); },
                               Browser::waitMs);
    }
    void listen() { m_heard = m_unit->output().size(); }
    bool clickAndHear(Browser::Page* page, const QPoint& pos, const QByteArray& words);

    QScopedPointer<Browser> m_browser;
    QScopedPointer<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
    QScopedPointer<Process> m_unit;
    QString m_url;
    int m_heard = 0;
};

// Where things are, by the unit's drawing: the screen lies 104 right of the front's edge and 32 below it.
static const QPoint screen(104, 32);
static const QRect tilePlace(508, 252, 216, 216);
static const QPoint tile = tilePlace.center();
static const QPoint tabKeys[audioPageCount] = {{263, 556}, {97, 556},  {595, 556},
                                               {927, 556}, {429, 556}, {761, 556}};
static const QRect pageArea(screen, QSize(1024, 510));
static const QPoint powerKey(47, 104), homeKey(1185, 104), backKey(1185, 192), knob(47, 463);

/// Stands between a page and the unit, and can be cut.
class Line : public QTcpServer
{
public:
    explicit Line(quint16 port)
        : m_port(port)
    {
    }
    void cut()
    {
        m_isCut = true;
        const auto sockets = findChildren<QTcpSocket*>();
        for (QTcpSocket* socket : sockets)
            socket->abort();
    }
    void mend() { m_isCut = false; }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto* near = new QTcpSocket(this);
        near->setSocketDescriptor(descriptor);
        if (m_isCut)
            return near->abort();
        auto* far = new QTcpSocket(this);
        far->connectToHost(QHostAddress::LocalHost, m_port);
        pass(near, far);
        pass(far, near);
    }

private:
    static void pass(QTcpSocket* from, QTcpSocket* to)
    {
        connect(from, &QTcpSocket::readyRead, to, [from, to] { to->write(from->readAll()); });
        connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
    }
    const quint16 m_port;
    bool m_isCut = false;
};

void TestBrowser::initTestCase()
{
    m_environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LC_ALL", "LANGUAGE"})
        m_environment.remove(name);
    m_environment.insert("LANG", "C");
    m_browser.reset(new Browser);
    QVERIFY2(m_browser->start(), qPrintable(m_browser->what()));
}

void TestBrowser::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(startUnit());
}

void TestBrowser::cleanup()
{
    m_browser->closeAll();
    if (m_unit->isRunning()) {
        m_unit->raise(SIGTERM);
        QCOMPARE(m_unit->exitCode(), 0);
    }
}

bool TestBrowser::startUnit()
{
    m_unit.reset(new Process(m_environment));
    m_unit->start(HEADUNIT, {"--remote", "--settings", m_folder->filePath("settings.db"), "--output", "none",
                             "--trace", "--trace-startup"});
    if (!m_unit->says("launcher-painted"))
        return false;
    const QRegularExpression address("http://127\\.0\\.0\\.1:[0-9]+/#[0-9a-f]{32}\n");
    m_url = address.match(QString::fromUtf8(m_unit->output())).captured().trimmed();
    listen();
    return !m_url.isEmpty();
}

Browser::Page* TestBrowser::openUnit(const QSize& size)
{
    Browser::Page* page = m_browser->open(m_url, size);
    return page && page->becomes("document.getElementById('unit').classList.contains('shown')") ? page
                                                                                                : nullptr;
}

QString TestBrowser::colours(Browser::Page* page, const QRect& place)
{
    return page
        ->evaluate(
            QString("crypto.subtle.digest('SHA-256', document.getElementById('picture').getContext('2d')"
                    ".getImageData(%1, %2, %3, %4).data).then(d => new Uint8Array(d).join())")
                .arg(place.x())
                .arg(place.y())
                .arg(place.width())
                .arg(place.height()))
        .toString();
}

bool TestBrowser::changes(Browser::Page* page, const QRect& place, const QString& before)
{
    return QTest::qWaitFor([&] { return colours(page, place) != before; }, Browser::waitMs);
}

QString TestBrowser::notice(Browser::Page* page)
{
    return page
        ->evaluate(
            "document.getElementById('notice').hidden ? '' : document.getElementById('text').innerText")
        .toString();
}

bool TestBrowser::becomesNotice(Browser::Page* page, const QString& part)
{
    return QTest::qWaitFor(
        [&] {
            const QString now = notice(page);
            return part.isEmpty() ? now.isEmpty() : now.contains(part);
        },
        Browser::waitMs);
}

bool TestBrowser::clickAndHear(Browser::Page* page, const QPoint& pos, const QByteArray& words)
{
    listen();
    return page->click(pos) && hears(words);
}

void TestBrowser::launcherIsSeenDotForDot()
{
    Process tour(m_environment);
    tour.start(HEADUNIT, {"--tour", m_folder->path(), "--settings", m_folder->filePath("tour.db")});
    QCOMPARE(tour.exitCode(), 0);
    const QImage launcher(m_folder->filePath("launcher.png"));

    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QCOMPARE(notice(page), QString());
    const QImage seen = page->screenshot().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(seen.size(), QSize(1232, 664));
    const QRect inside = tilePlace.adjusted(2, 2, -2, -2);
    QCOMPARE(seen.copy(inside),
             launcher.convertToFormat(QImage::Format_RGB32).copy(inside.translated(-screen)));
    // A little more room is no reason to blur it.
    QVERIFY(page->resize(QSize(1400, 800)));
    QVERIFY(page->becomes("document.getElementById('picture').getBoundingClientRect().width === 1232"));
    QVERIFY(page->resize(QSize(616, 332)));
    QVERIFY(page->becomes("document.getElementById('picture').getBoundingClientRect().width === 616"));
    QVERIFY(clickAndHear(page, tile / 2, "BaseWindow.onEnter()"));
}

void TestBrowser::sixTabsAreTouched()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QString before = colours(page, pageArea);
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    QVERIFY(changes(page, pageArea, before));
    for (int number = 0; number < audioPageCount; ++number) {
        before = colours(page, pageArea);
        QVERIFY2(clickAndHear(page, screen + tabKeys[number],
                              "setValue(\"AudioSetting_Page\", 1, " + QByteArray::number(number)),
                 m_unit->errors());
        QVERIFY2(changes(page, pageArea, before), qPrintable(QString::number(number)));
    }
}

void TestBrowser::bandFollowsThePointer()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    const QString levels = colours(page, pageArea);
    QVERIFY(page->click(screen + tabKeys[0]));
    QVERIFY(changes(page, pageArea, levels));
    const QPoint start = screen + QPoint(534, 160);
    const QRect band(start.x() - 30, screen.y() + 80, 60, 400);
    const int step = 36;

    QString before = colours(page, band);
    QVERIFY(page->mouse("mousePressed", start));
    QSet<QString> seen;
    for (int i = 1; i <= 4; ++i) {
        QVERIFY(page->mouse("mouseMoved", start + QPoint(0, i * step)));
        QVERIFY2(changes(page, band, before), qPrintable(QString::number(i)));
        before = colours(page, band);
        seen.insert(before);
    }
    QCOMPARE(seen.size(), 4);
    listen();
    QVERIFY(page->mouse("mouseReleased", start + QPoint(0, 4 * step)));
    QVERIFY2(hears("AudioService.setCustomEq1(1, 6, true)"), m_unit->output().mid(m_heard));
    // All that came bit by bit looks as what comes at once.
    Browser::Page* fresh = openUnit();
    QVERIFY2(fresh, qPrintable(m_browser->what()));
    QVERIFY(QTest::qWaitFor([&] { return colours(fresh, pageArea) == colours(page, pageArea); },
                            Browser::waitMs));
}

void TestBrowser::phoneTouchesScreenAndKeys()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QVERIFY(page->resize(QSize(390, 844), 3, true));
    const auto touchMiddle = [page](const char* box) {
        const QString middle =
            QString("(b => [b.x + b.width * %2, b.y + b.height * %3])(%1.getBoundingClientRect())");
        const bool isKey = qstrcmp(box, "") != 0;
        const QString element = isKey ? QString("document.querySelector('[aria-label=\"%1\"]')").arg(box)
                                      : QString("document.getElementById('glass')");
        const QJsonArray pos = page->evaluate(middle.arg(element, "0.5", isKey ? "0.5" : "0.55")).toArray();
        const QPointF point(pos.at(0).toDouble(), pos.at(1).toDouble());
        return page->touch("touchStart", point) && page->touch("touchEnd", point);
    };
    QVERIFY(page->becomes("document.body.classList.contains('tall')"));
    // The screen fills the width; all keys lie below it, and in the window.
    QVERIFY(page->becomes("document.getElementById('glass').getBoundingClientRect().width > 389"));
    QVERIFY(page->becomes(
        "[...document.querySelectorAll('#keys button')].every(key => key.getBoundingClientRect().top >="
        " document.getElementById('glass').getBoundingClientRect().bottom"
        " && key.getBoundingClientRect().bottom <= innerHeight)"));
    QVERIFY(page->becomes("innerWidth === 390")); // nothing reaches beyond the window and makes it smaller
    QVERIFY(touchMiddle(""));
    QVERIFY(hears("BaseWindow.onEnter()"));
    listen();
    QVERIFY(touchMiddle("Back"));
    QVERIFY(hears("BaseWindow.onHide()"));
    // Turned, it is the unit as on the desk.
    QVERIFY(page->resize(QSize(844, 390), 3, true));
    QVERIFY(page->becomes("document.body.classList.contains('wide')"));
    QVERIFY(touchMiddle(""));
    QVERIFY2(hears("BaseWindow.onEnter()"), m_unit->errors());
}

void TestBrowser::hardKeysWorkByPointer()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    QVERIFY(clickAndHear(page, backKey, "BaseWindow.onHide()"));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    QVERIFY(clickAndHear(page, homeKey, "BaseWindow.onHide()"));
    QVERIFY(clickAndHear(page, knob, "AudioService.setVolumeLevel(0, 0)"));
    QVERIFY(clickAndHear(page, knob, "AudioService.setVolumeLevel(25, 0)"));
    listen();
    QVERIFY(
        !page->call(
                 "Input.dispatchMouseEvent",
                 {{"type", "mouseWheel"}, {"x", knob.x()}, {"y", knob.y()}, {"deltaX", 0}, {"deltaY", -100}})
             .isEmpty());
    QVERIFY(hears("AudioService.setVolumeLevel(26, 0)"));
    const QString lit = colours(page, tilePlace);
    QVERIFY(page->click(powerKey));
    QVERIFY(changes(page, tilePlace, lit));
    QVERIFY(page->click(powerKey));
    QVERIFY(QTest::qWaitFor([&] { return colours(page, tilePlace) == lit; }, Browser::waitMs));
}

void TestBrowser::hardKeysWorkByKeyboardAndScreenReader()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    const auto focused = [page] { return page->evaluate("document.activeElement.ariaLabel").toString(); };
    QCOMPARE(focused(), QStringLiteral("Screen of the head unit"));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    QVERIFY(page->key("F6"));
    QCOMPARE(focused(), QStringLiteral("Power"));
    QVERIFY(page->key("Tab"));
    QCOMPARE(focused(), QStringLiteral("Home"));
    listen();
    QVERIFY(page->key("Enter"));
    QVERIFY(hears("BaseWindow.onHide()"));
    // What a screen reader does to a button has no pointer and no key.
    listen();
    page->evaluate("document.querySelector('[aria-label=\"Volume\"]').click()");
    QVERIFY(hears("AudioService.setVolumeLevel(0, 0)"));
    page->evaluate("document.querySelector('[aria-label=\"Volume\"]').focus()");
    listen();
    QVERIFY(page->key("ArrowUp"));
    QVERIFY(hears("AudioService.setVolumeLevel(26, 0)"));
    QVERIFY(page->evaluate("document.querySelector('[aria-label=\"Volume\"]').title")
                .toString()
                .contains("mute"));
    for (const char* name : {"Previous page", "Next page", "Back"})
        QVERIFY(page->becomes(QString("document.querySelector('[aria-label=\"%1\"]') !== null").arg(name)));
}

void TestBrowser::keyboardWorksTheUnitAndFocusIsTold()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QVERIFY(page->key("Tab"));
    QVERIFY2(page->becomes("document.getElementById('focus').textContent === 'EQ'"),
             qPrintable(m_browser->what()));
    listen();
    QVERIFY(page->key(" "));
    QVERIFY(hears("BaseWindow.onEnter()"));
    QVERIFY(page->key("Escape"));
    QVERIFY(hears("BaseWindow.onHide()"));
}

void TestBrowser::inspectorStandsBesideTheUnit()
{
    Browser::Page* page = openUnit(QSize(1792, 664));
    QVERIFY2(page, qPrintable(m_browser->what()));
    const QRect unit(0, 90, 1232, 570); // without the clock
    const QString alone = colours(page, unit);
    QVERIFY(page->key("F12"));
    QVERIFY(page->becomes("document.getElementById('picture').width === 1232 + 560"));
    QVERIFY(QTest::qWaitFor([&] { return colours(page, unit) == alone; }, Browser::waitMs));
    // It takes touches: the second tab, "Settings".
    const QRect panels(1240, 40, 540, 600);
    const QString nothing =
        page->evaluate("crypto.subtle.digest('SHA-256', new Uint8ClampedArray(540 * 600 * 4)"
                       ".map((_, i) => i % 4 === 3 ? 255 : 0)).then(d => new Uint8Array(d).join())")
            .toString();
    QVERIFY(changes(page, panels, nothing));
    const QString journal = colours(page, panels);
    QVERIFY(page->click(QPoint(1330, 24)));
    QVERIFY(changes(page, panels, journal));
    QVERIFY(page->key("F12"));
    QVERIFY(page->becomes("document.getElementById('picture').width === 1232"));
}

void TestBrowser::wrongTokenIsRefused()
{
    QString wrong = m_url;
    wrong.replace(wrong.size() - 1, 1, wrong.endsWith('0') ? "1" : "0");
    Browser::Page* page = m_browser->open(wrong);
    QVERIFY2(page && becomesNotice(page, "not valid"), qPrintable(m_browser->what()));
    QCOMPARE(page->evaluate("document.getElementById('picture').width").toInt(), 1);
    QVERIFY(!page->evaluate("document.getElementById('unit').classList.contains('shown')").toBool());
    Browser::Page* without = m_browser->open(m_url.section('#', 0, 0));
    QVERIFY2(without && becomesNotice(without, "not valid"), qPrintable(m_browser->what()));
}

void TestBrowser::foreignPageGetsNothing()
{
    // A page from elsewhere, in the same browser, that knows the port.
    QTcpServer elsewhere;
    connect(&elsewhere, &QTcpServer::newConnection, &elsewhere, [&elsewhere] {
        QTcpSocket* socket = elsewhere.nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, socket, [socket] {
            socket->readAll();
            socket->write(
                "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 9\r\n\r\n<p>hello\n");
        });
    });
    QVERIFY(elsewhere.listen(QHostAddress::LocalHost));
    Browser::Page* page = m_browser->open(QString("http://127.0.0.1:%1/").arg(elsewhere.serverPort()));
    QVERIFY2(page, qPrintable(m_browser->what()));
    const QString unit = m_url.section('#', 0, 0);
    QCOMPARE(page->evaluate(QString("new Promise(done => { const s = new WebSocket('%1');"
                                    "s.onopen = () => done('open'); s.onclose = () => done('closed'); })")
                                .arg(QString(unit).replace("http", "ws")))
                 .toString(),
             QStringLiteral("closed"));
    QCOMPARE(page->evaluate(QString("fetch('%1').then(() => 'read', () => 'refused')").arg(unit)).toString(),
             QStringLiteral("refused"));
    // In a frame it would be touched through what lies over it.
    QCOMPARE(page->evaluate(
                     QString("new Promise(done => { const f = document.createElement('iframe'); f.src = '%1';"
                             "f.onload = () => done(f.contentDocument === null ? 'apart' : 'near');"
                             "document.body.append(f); })")
                         .arg(m_url))
                 .toString(),
             QStringLiteral("apart"));
    Browser::Page* own = openUnit();
    QVERIFY2(own && notice(own).isEmpty(), qPrintable(m_browser->what())); // nobody else controls
}

void TestBrowser::secondPageLooksUntilItTakesControl()
{
    Browser::Page* first = openUnit();
    Browser::Page* second = openUnit();
    QVERIFY2(first && second, qPrintable(m_browser->what()));
    QVERIFY(becomesNotice(second, "Looking only"));
    QString before = colours(second, pageArea);
    QVERIFY(second->click(tile));
    QVERIFY(clickAndHear(first, tile, "BaseWindow.onEnter()"));
    QVERIFY(changes(second, pageArea, before));
    QCOMPARE(m_unit->output().count("BaseWindow.onEnter()"), 1);
    QVERIFY(QTest::qWaitFor([&] { return colours(second, pageArea) == colours(first, pageArea); }));

    second->evaluate("document.getElementById('take').click()");
    QVERIFY(becomesNotice(second, ""));
    QVERIFY(becomesNotice(first, "Looking only"));
    QVERIFY(clickAndHear(second, homeKey, "BaseWindow.onHide()"));
}

void TestBrowser::lookingPageControlsWhenTheOtherLeaves()
{
    Browser::Page* first = openUnit();
    Browser::Page* second = openUnit();
    QVERIFY2(first && second && becomesNotice(second, "Looking only"), qPrintable(m_browser->what()));
    first->close();
    QVERIFY(becomesNotice(second, ""));
    QVERIFY(clickAndHear(second, tile, "BaseWindow.onEnter()"));
}

void TestBrowser::reloadControlsAgain()
{
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    QVERIFY(page->reload());
    QVERIFY(page->becomes("document.getElementById('unit').classList.contains('shown')"));
    QVERIFY(becomesNotice(page, ""));
    QVERIFY(clickAndHear(page, homeKey, "BaseWindow.onHide()"));
}

void TestBrowser::unitThatHasGoneIsSaid_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("in an orderly way") << SIGTERM;
    QTest::newRow("all of a sudden") << SIGKILL;
}

void TestBrowser::unitThatHasGoneIsSaid()
{
    QFETCH(int, signal);
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    m_unit->raise(signal);
    QCOMPARE(m_unit->exitCode(), signal == SIGTERM ? 0 : -1);
    QVERIFY(becomesNotice(page, "The unit has gone"));
    QVERIFY(page->becomes("document.getElementById('notice').getAttribute('aria-live') === 'polite'"));
}

void TestBrowser::connectionThatIsLostComesBack()
{
    const quint16 port = quint16(QUrl(m_url).port());
    Line line(port);
    QVERIFY(line.listen(QHostAddress::LocalHost));
    m_url.replace(":" + QString::number(port) + "/", ":" + QString::number(line.serverPort()) + "/");
    Browser::Page* page = openUnit();
    QVERIFY2(page, qPrintable(m_browser->what()));
    line.cut();
    QVERIFY(becomesNotice(page, "The unit has gone"));
    line.mend();
    QVERIFY(becomesNotice(page, ""));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
}

void TestBrowser::pageRunsUnderItsPolicyAndLoadsNothingElse()
{
    Browser::Page* page = m_browser->open("data:text/html,hello");
    QVERIFY2(page, qPrintable(m_browser->what()));
    QStringList loaded;
    page->onEvent = [&loaded](const QString& method, const QJsonObject& parameters) {
        if (method == "Network.requestWillBeSent")
            loaded.append(parameters["request"].toObject()["url"].toString());
    };
    page->call("Network.enable");
    page->call(
        "Page.addScriptToEvaluateOnNewDocument",
        {{"source", "window.against = []; addEventListener('securitypolicyviolation', e => against.push("
                    "e.violatedDirective + ' ' + e.blockedURI))"}});
    QVERIFY(page->go(m_url));
    QVERIFY(page->becomes("document.getElementById('unit').classList.contains('shown')"));
    QVERIFY(clickAndHear(page, tile, "BaseWindow.onEnter()"));
    QVERIFY(page->key("F6"));
    QCOMPARE(page->evaluate("against.join()").toString(), QString());
    loaded = loaded.filter(QRegularExpression("^(?!data:|about:)"));
    QCOMPARE(loaded, QStringList{m_url.section('#', 0, 0)}); // the token has not left the browser
    // The policy is one that is kept.
    page->evaluate(
        "const injected = document.createElement('script');"
        "try { injected.textContent = 'window.ran = true'; document.body.append(injected); } catch (e) {}");
    QVERIFY(!page->evaluate("window.ran === true").toBool());
    QVERIFY(!page->evaluate("against.join()").toString().isEmpty());
}

QTEST_GUILESS_MAIN(TestBrowser)
#include "tst_browser.moc"
