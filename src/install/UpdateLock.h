#pragma once

// The lock an update of one record holds from its start to its end, between this user's processes: a second update
// of the record waits for it or says that one is running, and a sweep of leftovers leaves the record's app alone.

#include <QString>

namespace UpdateLock {

// The record's lock file, privateTempFolder/<digest>.lock; "" when there is no private temp folder or the digest is
// unfit as a file name.
QString path(const QString &digest);
// Whether an update of any record runs now, in any process of this user; true when that cannot be known.
bool anyHeld();

} // namespace UpdateLock
