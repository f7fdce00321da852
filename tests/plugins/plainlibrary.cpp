// A library without plug-in metadata, as the platform's own are.
#include <QtGlobal>

extern "C" Q_DECL_EXPORT int plainLibraryAnswer();

extern "C" int plainLibraryAnswer()
{
    return 42;
}
