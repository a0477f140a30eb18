#include "install/AuthHelper.h"

AuthHelper::AuthHelper() = default;

bool AuthHelper::copyPathWithForcedAuthentication(const QString &, const QString &)
{
    return false;
}

bool AuthHelper::removePathWithForcedAuthentication(const QString &)
{
    return false;
}
