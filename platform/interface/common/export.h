#pragma once

#include <QtGlobal>

// Symbol visibility of the platform libraries. Everything is hidden unless it carries one of these words; the
// library that implements a header defines its own *_LIBRARY macro while it is built.
#ifdef COMMON_LIBRARY
#define COMMON_EXPORT Q_DECL_EXPORT
#else
#define COMMON_EXPORT Q_DECL_IMPORT
#endif

#ifdef HVAUDIOSERVICE_LIBRARY
#define HVAUDIOSERVICE_EXPORT Q_DECL_EXPORT
#else
#define HVAUDIOSERVICE_EXPORT Q_DECL_IMPORT
#endif
