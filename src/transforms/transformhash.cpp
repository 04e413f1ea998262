#include "transforms/transformhash.h"

#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>

#include <memory>

namespace {

QCryptographicHash::Algorithm hashAlgorithm(int algorithm)
{
    switch (algorithm) {
    case TransformHash::Sha1:
        return QCryptographicHash::Sha1;
    case TransformHash::Sha256:
        return QCryptographicHash::Sha256;
    case TransformHash::Sha512:
        return QCryptographicHash::Sha512;
    case TransformHash::Sha3_256:
        return QCryptographicHash::Sha3_256;
    case TransformHash::Sha3_512:
        return QCryptographicHash::Sha3_512;
    case TransformHash::Keccak256:
        return QCryptographicHash::Keccak_256;
    case TransformHash::Keccak512:
        return QCryptographicHash::Keccak_512;
    default:
        return QCryptographicHash::Md5;
    }
}

// One hash or MAC object for a whole run, reset between cells, so that a cell costs its
// digest and two small conversions.
class Hasher
{
public:
    Hasher(int algorithm, const QString &secret)
    {
        if (algorithm == TransformHash::HmacMd5)
            m_mac = std::make_unique<QMessageAuthenticationCode>(QCryptographicHash::Md5,
                                                                 secret.toUtf8());
        else
            m_hash = std::make_unique<QCryptographicHash>(hashAlgorithm(algorithm));
    }

    QString digest(const QString &text)
    {
        const QByteArray bytes = text.toUtf8();
        QByteArray result;
        if (m_mac) {
            m_mac->reset();
            m_mac->addData(bytes);
            result = m_mac->result();
        } else {
            m_hash->reset();
            m_hash->addData(bytes);
            result = m_hash->result();
        }
        return QString::fromLatin1(result.toHex());
    }

private:
    std::unique_ptr<QCryptographicHash> m_hash;
    std::unique_ptr<QMessageAuthenticationCode> m_mac;
};

} // namespace

const TransformDescriptor &TransformHash::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 20;
        d.typeName = QStringLiteral("Hash");
        d.displayName = QStringLiteral("Hash");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Perform a one-way hashing.");
        d.keywords = QStringLiteral("masking pseudonymize pseudonymise cryptographic anonimise "
                                    "anonymize hmac md5 keccak sha512 sha256 sha3 sha2 sha1 "
                                    "hashing")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformHash>;
        return d;
    }();
    return descriptor;
}

QStringList TransformHash::algorithmNames()
{
    return {QStringLiteral("<select>"),   QStringLiteral("SHA1"),       QStringLiteral("SHA-256"),
            QStringLiteral("SHA-512"),    QStringLiteral("SHA3-256"),   QStringLiteral("SHA3-512"),
            QStringLiteral("Keccak-256"), QStringLiteral("Keccak-512"), QStringLiteral("MD5"),
            QStringLiteral("HMAC-MD5")};
}

void TransformHash::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) to hash.")));

    const QStringList names = algorithmNames();
    auto *hashing = new Parameter(ParameterType::Selection, QStringLiteral("Hashing"),
                                  QStringLiteral("Algorithm"), names.first(), names);
    hashing->setToolTip(QStringLiteral("Select the hashing algorithm."));
    hashing->setSelectionRequired(true);
    applyRememberedValue(useRemembered, hashing);
    addParameter(hashing);

    // The secret is the user's own data: never remembered as a default for new items.
    auto *secret = new Parameter(ParameterType::Text, QStringLiteral("Secret"),
                                 QStringLiteral("Secret"), QString());
    secret->setToolTip(QStringLiteral("Secret key for HMAC-MD5."));
    addParameter(secret);
}

QList<ParameterState> TransformHash::parameterStates() const
{
    const Parameter *hashing = parameter(QStringLiteral("Hashing"));
    return {{QStringLiteral("Secret"), hashing && hashing->toSelectionIndex() == HmacMd5}};
}

QString TransformHash::digest(const QString &text, int algorithm, const QString &secret)
{
    return Hasher(algorithm, secret).digest(text);
}

Dataset &TransformHash::process(Dataset &output, const TransformInputs &inputs,
                                const RunContext &context, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const int algorithm = option(QStringLiteral("Hashing")).toSelectionIndex();
    const QString secret = option(QStringLiteral("Secret")).toString();

    output = inputDataset(inputs, 0);
    if (algorithm <= Unchosen) {
        setResult(cellsChangedText(0, 0));
        return output;
    }
    Hasher hasher(algorithm, secret);
    bool stopped = false;
    // An empty cell stays empty: a missing value is no secret, and its digest would look like
    // a value.
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, CellRules::selectedColumns(*columnsOption),
        [&hasher, &stopped](int, const QString &cell) {
            return cell.isEmpty() || stopped ? cell : hasher.digest(cell);
        },
        [this, &context, &stopped](int r, int rowCount) {
            reportRow(r, rowCount);
            if (r % 1000 == 0 && !stopped)
                stopped = context.isStopRequested();
        });
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
