#include "QtTranslation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QTranslator>
#include <optional>

namespace plattmix::window {

namespace {

QPointer<QTranslator>& Installed() {
    static QPointer<QTranslator> installed;
    return installed;
}

std::optional<QLocale::Language> LanguageNamed(const QString& name) {
    if (name.isEmpty() || name == QLatin1String("default"))
        return QLocale::German;
    for (int i = QLocale::AnyLanguage + 1; i <= QLocale::LastLanguage; ++i) {
        const auto language = static_cast<QLocale::Language>(i);
        if (name.compare(QLocale::languageToString(language), Qt::CaseInsensitive) == 0 ||
            name.compare(QLocale(language).nativeLanguageName(), Qt::CaseInsensitive) == 0)
            return language;
    }
    return std::nullopt;
}

}  // namespace

void InstallQtTranslation(const std::string& languageName) {
    delete Installed();  // a translator leaves the application when it is deleted
    const auto language = LanguageNamed(QString::fromStdString(languageName));
    if (!language || *language == QLocale::English)
        return;
    // Owned by the application, so it ends with it.
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(QLocale(*language), QStringLiteral("qtbase"), QStringLiteral("_"),
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        delete translator;
        return;
    }
    QCoreApplication::installTranslator(translator);
    Installed() = translator;
}

}  // namespace plattmix::window
