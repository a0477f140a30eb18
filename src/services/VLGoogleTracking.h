#pragma once

// Usage analytics: one event per call, posted to the analytics host's "/collect" in the Measurement Protocol's
// form. Hits are sent as fire-and-forget requests (short deadlines, abandoned at exit), never on the calling thread,
// and never report to the user: every failure ends in one log line. The setting "sendAnalytics" turns them off.

#include <QByteArray>
#include <QString>

namespace VLGoogleTracking {

inline constexpr char kCategory[] = "vld604";

// The hit's form body. Category, action, label and value go as they stand, unencoded (labels may be e-mail
// addresses), so a "&" in a label splits the body: the collector has always read it that way.
QByteArray hitBody(const QString &hitType, const QString &category, const QString &action, const QString &label,
                   const QString &value);

// Queues one hit and returns at once.
void trackEvent(const QString &hitType, const QString &category, const QString &action,
                const QString &label = QString(), const QString &value = QString());

// The program's own events: hit type "event", category "vld604".
void trackProgramEvent(const QString &action, const QString &label = QString(), const QString &value = QString());

// Gives hits still on their way up to timeoutMs to leave, then abandons them. Call before the application object
// goes: a hit cannot be sent without it.
void waitForPendingHits(int timeoutMs);

} // namespace VLGoogleTracking
