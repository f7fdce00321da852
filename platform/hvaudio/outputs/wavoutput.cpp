#include "platform/hvaudio/outputs/wavoutput.h"

namespace hvaudio {

WavOutput::WavOutput(std::string path)
    : m_path(std::move(path))
{
}

WavOutput::~WavOutput()
{
    stop();
}

std::string WavOutput::status() const
{
    return (m_full ? "can't write any more to " : "writing ") + m_path;
}

bool WavOutput::open(double wavRate, std::string& error)
{
    m_full = false;
    m_writer = WavWriter::create(m_path, wavRate, dsp::speakerCount, error);
    return m_writer != nullptr;
}

void WavOutput::close()
{
    m_writer.reset();
}

void WavOutput::deliver(const float* const out[dsp::speakerCount], int frames)
{
    if (!m_full && !m_writer->write(out, frames))
        m_full = true;
}

} // namespace hvaudio
