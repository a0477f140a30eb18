#pragma once

// The matching request's text: a fixed head, then one group of fields per installed app. Values that the
// request sends encoded are URL-encoded (as UTF-8); a value that is absent (or that cannot be encoded, such as
// text with an unpaired surrogate) is written "(null)", the way the service has always received it.

#include <QString>

class VLApp;

// The signed-in member's fields of the head; both 0 while nobody is signed in.
struct MemberFields
{
    int membership = 0;
    int memberID = 0;
};

namespace AutomatchPost {

QString createPost(const MemberFields &member = {});
QString createPostBackGroundScan(const MemberFields &member = {});
QString createPostManualScan(const MemberFields &member = {});

// Appends app's group with its index in the list sorted by localPath. An app that is not installed ("-") sends
// nothing, and its index stays used, so the indices sent can have gaps.
void appendAppFields(QString &post, int index, const VLApp &app);

} // namespace AutomatchPost
