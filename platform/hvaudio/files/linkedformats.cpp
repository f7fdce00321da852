#include "platform/hvaudio/files/fileformats.h"

const hvaudio::FileFormats* hvaudio::fileFormats(std::string&)
{
    return &hvaudioFileFormats;
}
