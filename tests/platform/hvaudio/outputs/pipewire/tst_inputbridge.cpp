#include "platform/hvaudio/outputs/pipewire/inputbridge.h"

#include <QtTest>

#include <cmath>

using namespace hvaudio;

namespace {

constexpr double rate = 48000;

} // namespace

class TestInputBridge : public QObject
{
    Q_OBJECT

private slots:
    void bridgeIsOneBlockLateWhateverTheOrder();
    void bridgeFadesWhenItRunsShortAndComesBack();
    void bridgeThatNobodyPulledGivesNewSound();
};

void TestInputBridge::bridgeIsOneBlockLateWhateverTheOrder()
{
    InputBridge bridge;
    bridge.reset(rate);
    constexpr int block = 256;
    std::vector<float> in(block), left(block), right(block);
    std::uint64_t cycle = 1000;
    float next = 1;
    for (int n = 0; n < 400; ++n, ++cycle) {
        const bool inFirst = n / 7 % 2;
        const float first = next;
        for (float& x : in)
            x = next++;
        if (inFirst)
            bridge.push(cycle, in.data(), in.data(), block);
        bridge.begin(cycle, block);
        const bool any = bridge.pull(left.data(), right.data(), 100) &&
                         bridge.pull(left.data() + 100, right.data() + 100, block - 100);
        if (!inFirst)
            bridge.push(cycle, in.data(), in.data(), block);
        if (n < 2)
            continue; // the fade at the start
        QVERIFY(any);
        QCOMPARE(left[0], first - block);
        QCOMPARE(right[block - 1], first - 1);
    }
}

void TestInputBridge::bridgeFadesWhenItRunsShortAndComesBack()
{
    InputBridge bridge;
    bridge.reset(rate);
    constexpr int block = 256;
    std::vector<float> in(block, 0.5f), left(block), right(block);
    float before = 0;
    bool silent = false, back = false;
    for (int n = 0; n < 200; ++n) {
        bridge.begin(std::uint64_t(n + 1), block);
        const bool any = bridge.pull(left.data(), right.data(), block);
        silent |= n > 105 && !any;
        back |= silent && any && left[block - 1] == 0.5f;
        for (int i = 0; i < block; ++i) {
            const float x = any ? left[std::size_t(i)] : 0;
            QVERIFY2(std::abs(x - before) < 0.01f, qPrintable(QString::number(n)));
            before = x;
        }
        if (n < 100 || n > 110)
            bridge.push(std::uint64_t(n + 1), in.data(), in.data(), block);
    }
    QVERIFY(silent);
    QVERIFY(back);
}

void TestInputBridge::bridgeThatNobodyPulledGivesNewSound()
{
    InputBridge bridge;
    bridge.reset(rate);
    std::vector<float> in(512), left(512), right(512);
    for (int n = 0; n < 1000; ++n) {
        std::fill(in.begin(), in.end(), n < 999 ? 0.1f : 0.9f);
        bridge.push(std::uint64_t(n + 1), in.data(), in.data(), 512);
    }
    bridge.begin(1001, 512);
    QVERIFY(!bridge.pull(left.data(), right.data(), 512)); // all of it was old
    std::fill(in.begin(), in.end(), 0.9f);
    bridge.push(1001, in.data(), in.data(), 512);
    bridge.begin(1002, 512);
    QVERIFY(bridge.pull(left.data(), right.data(), 512));
    QCOMPARE(left[511], 0.9f);
}

QTEST_GUILESS_MAIN(TestInputBridge)
#include "tst_inputbridge.moc"
