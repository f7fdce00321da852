#include "platform/hvaudio/outputs/nulloutput.h"

namespace hvaudio {

NullOutput::~NullOutput()
{
    stop();
}

std::string NullOutput::status() const
{
    return "no sound output";
}

bool NullOutput::open(double, std::string&)
{
    return true;
}

} // namespace hvaudio
