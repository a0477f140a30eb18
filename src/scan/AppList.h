#pragma once

// Records are shared, not copied: the store, the lists, the panel and a running update all look at the
// same VLApp, so a change made by one of them is seen by all.

#include "model/VLApp.h"

#include <QList>
#include <QMetaType>

#include <memory>

using AppRef = std::shared_ptr<VLApp>;
using AppList = QList<AppRef>;

Q_DECLARE_METATYPE(AppList)
