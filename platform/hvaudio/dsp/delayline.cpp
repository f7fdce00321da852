#include "platform/hvaudio/dsp/delayline.h"

namespace hvaudio::dsp {

void DelayLine::prepare(double rate, int longestTap)
{
    m_history.prepare(speakerCount, longestTap);
    for (Tap& tap : m_taps)
        tap = Tap{0, 0, 0, Fade(rate)};
}

void DelayLine::clear() noexcept
{
    m_history.clear();
}

void DelayLine::aim(int speaker, int tap) noexcept
{
    m_taps[speaker].wanted = tap;
}

void DelayLine::jump() noexcept
{
    for (Tap& tap : m_taps)
        tap.now = tap.wanted, tap.fade.stop();
}

bool DelayLine::advanceGrid() noexcept
{
    bool fading = false;
    for (Tap& tap : m_taps) {
        if (tap.fade.advance())
            tap.now = tap.next;
        if (!tap.fade.running() && tap.now != tap.wanted) {
            tap.next = tap.wanted;
            tap.fade.start();
        }
        fading |= tap.fade.running();
    }
    return fading;
}

float* const* DelayLine::inputs() noexcept
{
    for (int i = 0; i < speakerCount; ++i)
        m_inputs[i] = m_history.next(i);
    return m_inputs;
}

void DelayLine::read(float* const out[speakerCount], int frames, int offset,
                     float peak[speakerCount]) noexcept
{
    for (int i = 0; i < speakerCount; ++i) {
        const Tap& tap = m_taps[i];
        const float* now = m_history.before(i, tap.now);
        float mixed[gridFrames];
        if (tap.fade.running()) {
            tap.fade.mix(*m_kernel, now, m_history.before(i, tap.next), mixed, frames, offset);
            now = mixed;
        }
        peak[i] = m_kernel->copy(now, out[i], frames);
    }
    m_history.advance(frames);
}

} // namespace hvaudio::dsp
