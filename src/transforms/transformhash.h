#pragma once

#include "transforms/framework/transform.h"

// Replaces cells with the digest of their text.
class TransformHash : public Transform
{
    Q_OBJECT

public:
    enum Algorithm {
        Unchosen,
        Sha1,
        Sha256,
        Sha512,
        Sha3_256,
        Sha3_512,
        Keccak256,
        Keccak512,
        Md5,
        HmacMd5
    };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

    static QStringList algorithmNames();
    // The digest of the UTF-8 text as lower-case hexadecimal; secret is the key of HMAC-MD5.
    static QString digest(const QString &text, int algorithm, const QString &secret = QString());

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
