// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/LogindProperties.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

namespace marrowby {

std::optional<std::uint32_t> userOfPair(const QVariant& value) {
    const auto pair = value.value<QDBusArgument>();
    if (pair.currentSignature() != QLatin1String("(uo)")) return std::nullopt;
    quint32 user = 0;
    QDBusObjectPath path;
    pair.beginStructure();
    pair >> user >> path;
    pair.endStructure();
    return user;
}

}  // namespace marrowby
