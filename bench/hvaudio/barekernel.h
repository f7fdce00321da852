#pragma once

#include "bench/hvaudio/peers.h"

#include <cstring>
#include <immintrin.h>

/// The least that computes the chain's filters, mix and delays with AVX2 and FMA: no limiter, no cleaning, no
/// glide, no meter, nothing that can be set. What the processor's time is compared with.
///
/// Double, transposed direct form II. A vector holds left and right of two sections; each takes what the
/// section before it gave a frame ago, so that none of a frame waits for another.
namespace peers {

class BareKernel
{
public:
    BareKernel()
    {
        std::vector<Section> sections = plainSections();
        sections.resize(16, Section{0.01, 2, 1, 2, 1}); // passes everything
        for (int v = 0; v < 8; ++v)
            m_cascade[v].set(sections[2 * v], sections[2 * v], sections[2 * v + 1], sections[2 * v + 1]);
        const TwoSections high = crossoverHighPass(80, 4, rate), low = crossoverLowPass(80, 4, rate);
        for (int s = 0; s < 2; ++s)
            m_high[s].set(high[s], high[s], high[s], high[s]);
        m_low.set(low[0], low[0], low[1], low[1]);
        for (int i = 0; i < speakerCount; ++i) {
            m_late[i] = int(plainDelaysMs[i] * rate / 1000);
            m_line[i].resize(lineFrames);
        }
    }

    /// At most `most` frames.
    static constexpr int most = 1024;
    void process(const float* left, const float* right, float* const out[speakerCount], int frames)
    {
        alignas(32) double pairs[2 * most];
        for (int n = 0; n < frames; ++n) {
            pairs[2 * n] = 0.5 * left[n];
            pairs[2 * n + 1] = 0.5 * right[n];
        }
        fourVectors(m_cascade, pairs, frames);
        fourVectors(m_cascade + 4, pairs, frames);
        if (m_at + frames > lineFrames) {
            for (auto& line : m_line)
                std::memmove(line.data(), &line[size_t(m_at - past)], past * sizeof(float));
            m_at = past;
        }
        crossovers(pairs, frames);
        for (int i = 0; i < speakerCount; ++i)
            std::memcpy(out[i], &m_line[i][size_t(m_at - m_late[i])], size_t(frames) * sizeof(float));
        m_at += frames;
    }

private:
    struct Vector
    {
        __m256d b0, b1, b2, a1, a2, m1{}, m2{}, y{};
        void set(const Section& s0, const Section& s1, const Section& s2, const Section& s3)
        {
            double c[5][4];
            const Section* const all[4] = {&s0, &s1, &s2, &s3};
            for (int i = 0; i < 4; ++i) {
                const Biquad q = biquadOf(*all[i]);
                const double of[5] = {q.b0, q.b1, q.b2, q.a1, q.a2};
                for (int k = 0; k < 5; ++k)
                    c[k][i] = of[k];
            }
            __m256d* const to[5] = {&b0, &b1, &b2, &a1, &a2};
            for (int k = 0; k < 5; ++k)
                *to[k] = _mm256_loadu_pd(c[k]);
        }
        void run(__m256d x)
        {
            y = _mm256_fmadd_pd(b0, x, m1);
            m1 = _mm256_fnmadd_pd(a1, y, _mm256_fmadd_pd(b1, x, m2));
            m2 = _mm256_fnmadd_pd(a2, y, _mm256_mul_pd(b2, x));
        }
    };

    static void fourVectors(Vector* vectors, double* pairs, int frames)
    {
        Vector a = vectors[0], b = vectors[1], c = vectors[2], d = vectors[3];
        for (int n = 0; n < frames; ++n) {
            const __m256d xd = _mm256_permute2f128_pd(c.y, d.y, 0x21),
                          xc = _mm256_permute2f128_pd(b.y, c.y, 0x21);
            const __m256d xb = _mm256_permute2f128_pd(a.y, b.y, 0x21);
            const __m256d xa = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(pairs + 2 * n)),
                                                    _mm256_castpd256_pd128(a.y), 1);
            _mm_store_pd(pairs + 2 * n, _mm256_extractf128_pd(d.y, 1));
            a.run(xa), b.run(xb), c.run(xc), d.run(xd);
        }
        vectors[0] = a, vectors[1] = b, vectors[2] = c, vectors[3] = d;
    }

    void crossovers(const double* pairs, int frames)
    {
        const __m256d gain = _mm256_setr_pd(0.9, 0.8, 0.7, 0.6), subwooferGain = _mm256_set1_pd(0.35);
        Vector first = m_high[0], second = m_high[1], low = m_low;
        for (int n = 0; n < frames; ++n) {
            const __m256d x = _mm256_broadcast_pd(reinterpret_cast<const __m128d*>(pairs + 2 * n));
            second.run(first.y);
            first.run(_mm256_mul_pd(x, gain));
            low.run(_mm256_insertf128_pd(_mm256_mul_pd(x, subwooferGain), _mm256_castpd256_pd128(low.y), 1));
            alignas(16) float y[4];
            _mm_store_ps(y, _mm256_cvtpd_ps(second.y));
            for (int i = 0; i < cabinSpeakerCount; ++i)
                m_line[i][size_t(m_at + n)] = y[i];
            const __m128d sum = _mm256_extractf128_pd(low.y, 1);
            m_line[Subwoofer][size_t(m_at + n)] = float(sum[0] + sum[1]);
        }
        m_high[0] = first, m_high[1] = second, m_low = low;
    }

    static constexpr int past = 512, lineFrames = past + 16 * most;
    Vector m_cascade[8], m_high[2], m_low;
    int m_late[speakerCount], m_at = past;
    std::vector<float> m_line[speakerCount];
};

} // namespace peers
