#include "ui/AddressFields.h"

#include "services/VLMemberAccount.h"

#include <QCoreApplication>

QString AccountField::title() const
{
    return QCoreApplication::translate("AccountField", label);
}

namespace AddressFields {

const QList<AccountField> &all()
{
    static const QList<AccountField> fields = {
        {"address", &VLMemberAccount::address, QT_TRANSLATE_NOOP("AccountField", "Address")},
        {"city", &VLMemberAccount::city, QT_TRANSLATE_NOOP("AccountField", "City")},
        {"state", &VLMemberAccount::state, QT_TRANSLATE_NOOP("AccountField", "State")},
        {"zip", &VLMemberAccount::zip, QT_TRANSLATE_NOOP("AccountField", "Postal code")},
        {"country", &VLMemberAccount::country, QT_TRANSLATE_NOOP("AccountField", "Country")},
    };
    return fields;
}

} // namespace AddressFields
