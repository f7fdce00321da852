#include "platform/hvaudio/dsp/snapshot.h"
#include "platform/hvaudio/dsp/triplebuffer.h"

#include <QtTest>

#include <atomic>
#include <cstdint>
#include <thread>

using namespace hvaudio::dsp;

/// The hand-over from one thread to another.
class TestTripleBuffer : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsNewAtFirst();
    void theNewestOfSeveralIsRead();
    void aValueIsReadOnce();
    void readValueStaysWhileOthersAreWritten();
    void everyValueReadIsWholeAndNoneIsOlder();
};

/// As large as what really goes through, and every word tells which value it belongs to.
struct Payload
{
    std::array<uint32_t, sizeof(Snapshot) / sizeof(uint32_t)> words = {};
    static Payload number(uint32_t n)
    {
        Payload p;
        for (size_t i = 0; i < p.words.size(); ++i)
            p.words[i] = n * 2654435761u + uint32_t(i);
        return p;
    }
    uint32_t number() const { return words[0] * 244002641u; } // inverse of the factor above
    bool whole() const
    {
        for (size_t i = 0; i < words.size(); ++i)
            if (words[i] != words[0] + uint32_t(i))
                return false;
        return true;
    }
};

void TestTripleBuffer::nothingIsNewAtFirst()
{
    TripleBuffer<int> buffer;
    QVERIFY(!buffer.update());
    QCOMPARE(buffer.value(), 0);
}

void TestTripleBuffer::theNewestOfSeveralIsRead()
{
    TripleBuffer<int> buffer;
    for (int i = 1; i <= 7; ++i)
        buffer.write(i);
    QVERIFY(buffer.update());
    QCOMPARE(buffer.value(), 7);
}

void TestTripleBuffer::aValueIsReadOnce()
{
    TripleBuffer<int> buffer;
    buffer.write(3);
    QVERIFY(buffer.update());
    QVERIFY(!buffer.update());
    QCOMPARE(buffer.value(), 3);
}

void TestTripleBuffer::readValueStaysWhileOthersAreWritten()
{
    TripleBuffer<int> buffer;
    buffer.write(1);
    QVERIFY(buffer.update());
    for (int i = 2; i < 10; ++i) {
        buffer.write(i);
        QCOMPARE(buffer.value(), 1);
    }
}

void TestTripleBuffer::everyValueReadIsWholeAndNoneIsOlder()
{
    QCOMPARE(Payload::number(12345).number(), 12345u);
    QVERIFY(!Payload().whole());
    TripleBuffer<Payload> buffer;
    std::atomic<bool> enough{false};
    uint32_t written = 0;
    std::thread writer([&] {
        while (!enough) {
            buffer.write(Payload::number(++written));
            if (written % 64 == 0)
                std::this_thread::yield(); // on one processor the reader shall have its turn in between
        }
    });
    uint32_t before = 0;
    bool whole = true, forward = true;
    for (int reads = 0; reads < 20000 && whole && forward;) {
        if (!buffer.update()) {
            std::this_thread::yield();
            continue;
        }
        ++reads;
        whole = buffer.value().whole();
        forward = buffer.value().number() > before;
        before = buffer.value().number();
    }
    enough = true;
    writer.join();
    QVERIFY(whole);
    QVERIFY(forward);
    // The last one arrives.
    QVERIFY(buffer.update() || before == written);
    QCOMPARE(buffer.value().number(), written);
}

QTEST_GUILESS_MAIN(TestTripleBuffer)
#include "tst_triplebuffer.moc"
