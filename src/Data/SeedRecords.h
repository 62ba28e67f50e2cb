#pragma once

#include "Foundation/Records.h"
#include "Foundation/Resource.h"

#include <vector>

namespace veltrin {

/// The records that an empty store starts with: those of the resource `path`, each with a new identifier, the
/// members of `common`, and both dates `now`.
template <Record R>
std::vector<R> seedRecords(const QString& path, const Json::Object& common, Date now) {
    const Json seeds = Resource::json(path);
    std::vector<R> records;
    for (Json seed : *seeds.array()) {
        seed.set(QStringLiteral("id"), uuidText(QUuid::createUuid()));
        for (const auto& [key, value] : common)
            seed.set(key, value);
        for (const QString& key : {QStringLiteral("createdAt"), QStringLiteral("updatedAt")})
            seed.set(key, now.secondsSinceReferenceDate());
        auto record = readRecord<R>(seed, {DateStrategy::referenceDate, now});
        if (!record) qFatal("resource %s holds no such records", qUtf8Printable(path));
        records.push_back(std::move(*record));
    }
    return records;
}

}  // namespace veltrin
