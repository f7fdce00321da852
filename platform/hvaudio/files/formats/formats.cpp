#include "platform/hvaudio/files/formats/formats.h"

#include "platform/hvaudio/files/fileformats.h"

extern "C" __attribute__((visibility("default")))
const hvaudio::FileFormats hvaudioFileFormats = {hvaudio::openByLibsndfile, hvaudio::createByLibsndfile};
