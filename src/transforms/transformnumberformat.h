#pragma once

#include "transforms/framework/transform.h"

#include <QChar>
#include <QStringView>

// Rewrites numbers read in one locale into another format and locale.
class TransformNumberFormat : public Transform
{
    Q_OBJECT

public:
    enum DecimalFrom { Automatic, Dot, Comma, PreferencesLocale, SelectedLocale };

    // How the digits of a number are written: the decimal separator, the group separator
    // (blanks and apostrophes group digits too), and the digit zero of the locale's digits.
    struct Syntax
    {
        QChar decimal = QLatin1Char('.');
        QChar group = QLatin1Char(',');
        QChar zero = QLatin1Char('0');
    };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;
    QList<ParameterState> parameterStates() const override;

    static QStringList decimalChoices();
    static QStringList formatChoices();
    // Reads text as a number written in syntax; currency signs are passed over.
    static bool readNumber(QStringView text, const Syntax &syntax, double *value);
    // The decimal separator that the numbers of one column use, judged from the texts that
    // only one reading fits ("1.234,5", "3,75", "1,234,567"); fallback when none tells.
    static QChar guessDecimal(const Dataset &data, int c, QChar fallback);

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    Syntax syntaxFor(int decimalFrom, const Dataset &data, int c);
};
