#pragma once

#include "transforms/framework/transform.h"

// Rewrites the chosen cells from or to one of four encodings of text: Base64 and URL
// encoding of the UTF-8 bytes, and the character references of HTML and XML.
class TransformDecode : public Transform
{
    Q_OBJECT

public:
    enum Change {
        Unchosen,
        FromBase64,
        ToBase64,
        FromUrl,
        ToUrl,
        FromHtml,
        ToHtml,
        FromXml,
        ToXml
    };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;

    static QStringList changeNames();
    // The text as change makes it; text itself where it can't be decoded.
    static QString changed(const QString &text, int change);

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
