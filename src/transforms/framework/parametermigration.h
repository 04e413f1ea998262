#pragma once

#include "transforms/framework/transform.h"

// Small rewrites that transforms use in migrateParameters() to read documents of older
// versions: each works on the stored text form of one option.
namespace ParameterMigration {

// Lowers a stored whole number by one; other texts stay.
void lowerByOne(StoredParameter *parameter);
// Replaces the choice from by to, for a choice that was renamed.
void renameChoice(StoredParameter *parameter, const QString &from, const QString &to);

} // namespace ParameterMigration
