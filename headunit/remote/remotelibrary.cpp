#include "headunit/remote/remotelibrary.h"

#include "headunit/remote/listenaddress.h"
#include "headunit/remote/remotescreen.h"

#include <memory>

namespace headunit {

namespace {

bool isAddress(const QString& text, bool* isLoopback)
{
    const std::optional<ListenAddress> address = readListenAddress(text);
    *isLoopback = address && address->isLoopback();
    return address.has_value();
}

QObject* start(UnitWindow* unit, const QString& address, const QString& certificate, const QString& key,
               QString* url, QString* error)
{
    auto screen = std::make_unique<RemoteScreen>(unit);
    if (!screen->start({*readListenAddress(address), certificate, key}, error))
        return nullptr;
    *url = screen->url();
    return screen.release();
}

} // namespace

} // namespace headunit

extern "C" Q_DECL_EXPORT const headunit::RemoteLibrary* remoteLibrary()
{
    static const headunit::RemoteLibrary library = {headunit::isAddress, headunit::start};
    return &library;
}
