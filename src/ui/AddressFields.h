#pragma once

// The member's postal address as the account holds it, in the order the forms show it: the profile edits it and the
// deals cart orders with it.

#include <QList>
#include <QString>

class VLMemberAccount;

// One of the account's text fields as a form edits it.
struct AccountField
{
    const char *name; // the account's field, and the object name of the edit that shows it
    QString VLMemberAccount::*value;
    const char *label; // marked for translation in the "AccountField" context; title() translates it

    QString title() const;
};

namespace AddressFields {

const QList<AccountField> &all();

} // namespace AddressFields
