#include <cstdlib>
#include <initializer_list>
#include <utility>

#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/l10n/SupportAddress.h"

namespace kovra {

namespace {

// Returns the texts of one key by language. `inOrder` has one text for each language, in the order of
// L10n::allLanguages. Aborts if the number of texts is different.
L10n::Table texts(std::initializer_list<std::string> inOrder) {
    if (inOrder.size() != L10n::allLanguages.size()) std::abort();
    L10n::Table table;
    table.reserve(inOrder.size());
    auto lang = L10n::allLanguages.begin();
    for (const std::string& text : inOrder) table.emplace(*lang++, text);
    return table;
}

// Returns the entries by key. Aborts if a key occurs twice, which is a mistake in this file.
L10n::Catalogue catalogue(std::initializer_list<std::pair<const char*, L10n::Table>> entries) {
    L10n::Catalogue result;
    result.reserve(entries.size());
    for (const auto& [key, table] : entries) {
        if (!result.emplace(key, table).second) std::abort();
    }
    return result;
}

}  // namespace

// Each text has a line of its own, however long, so that translators can compare the languages.
// clang-format off
const L10n::Catalogue& L10n::strings() {
    static const std::string address = supportAddress;
    static const Catalogue instance = catalogue({
        {"menu.hotkeyHint", texts({
            "Shortcut: Ctrl+Opt+T",
            "Горячая клавиша: Ctrl+Opt+T",
            "Гаряча клавіша: Ctrl+Opt+T",
            "Raccourci : Ctrl+Opt+T",
            "Tastenkürzel: Ctrl+Opt+T",
            "Atajo: Ctrl+Opt+T",
        })},
        {"menu.settings", texts({
            "Settings…",
            "Настройки…",
            "Налаштування…",
            "Réglages…",
            "Einstellungen…",
            "Ajustes…",
        })},
        {"menu.activate", texts({
            "Activate driver…",
            "Активировать драйвер…",
            "Активувати драйвер…",
            "Activer le pilote…",
            "Treiber aktivieren…",
            "Activar controlador…",
        })},
        {"menu.about", texts({
            "About…",
            "О программе…",
            "Про програму…",
            "À propos…",
            "Über…",
            "Acerca de…",
        })},
        {"menu.launchAtLogin", texts({
            "Launch at login",
            "Запускать при входе",
            "Запускати під час входу",
            "Lancer à l’ouverture de session",
            "Beim Anmelden starten",
            "Abrir al iniciar sesión",
        })},
        {"menu.quit", texts({
            "Quit",
            "Завершить",
            "Завершити",
            "Quitter",
            "Beenden",
            "Salir",
        })},
        {"block", texts({
            "Mute trackpad",
            "Глушить трекпад",
            "Глушити тачпад",
            "Couper le trackpad",
            "Trackpad deaktivieren",
            "Silenciar trackpad",
        })},
        {"settings.title", texts({
            "BLE-kovra — trackpad control",
            "BLE-kovra — управление трекпадом",
            "BLE-kovra — керування тачпадом",
            "BLE-kovra — contrôle du trackpad",
            "BLE-kovra — Trackpad-Steuerung",
            "BLE-kovra — control del trackpad",
        })},
        {"settings.mode", texts({
            "Mode:",
            "Режим:",
            "Режим:",
            "Mode :",
            "Modus:",
            "Modo:",
        })},
        {"mode.always", texts({
            "Always",
            "Всегда",
            "Завжди",
            "Toujours",
            "Immer",
            "Siempre",
        })},
        {"mode.onDevice", texts({
            "When the selected mouse is connected",
            "Когда подключена выбранная мышь",
            "Коли під’єднано вибрану мишу",
            "Quand la souris sélectionnée est connectée",
            "Wenn die gewählte Maus verbunden ist",
            "Cuando el ratón seleccionado está conectado",
        })},
        {"settings.chooseMouse", texts({
            "Choose a mouse",
            "Выберите мышь",
            "Виберіть мишу",
            "Choisissez une souris",
            "Maus auswählen",
            "Elige un ratón",
        })},
        {"settings.hint", texts({
            "In “when a mouse is connected” mode the trackpad is muted while the selected device is connected. Disconnect the mouse — the trackpad works again.",
            "В режиме «когда подключена мышь» трекпад глушится, пока выбранное устройство на связи. Отключите мышь — трекпад снова работает.",
            "У режимі «коли під’єднано мишу» тачпад вимикається, поки вибраний пристрій на зв’язку. Від’єднайте мишу — тачпад знову працює.",
            "En mode « quand une souris est connectée », le trackpad est coupé tant que l’appareil sélectionné est connecté. Déconnectez la souris — le trackpad refonctionne.",
            "Im Modus „wenn eine Maus verbunden ist“ wird das Trackpad deaktiviert, solange das gewählte Gerät verbunden ist. Maus trennen — das Trackpad funktioniert wieder.",
            "En el modo «cuando hay un ratón conectado», el trackpad se silencia mientras el dispositivo seleccionado esté conectado. Desconecta el ratón y el trackpad vuelve a funcionar.",
        })},
        {"settings.noDevices", texts({
            "No devices found. Connect a mouse.",
            "Устройства не найдены. Подключите мышь.",
            "Пристроїв не знайдено. Під’єднайте мишу.",
            "Aucun appareil trouvé. Connectez une souris.",
            "Keine Geräte gefunden. Schließen Sie eine Maus an.",
            "No se encontraron dispositivos. Conecta un ratón.",
        })},
        {"device.disconnected", texts({
            "disconnected",
            "отключено",
            "від’єднано",
            "déconnecté",
            "getrennt",
            "desconectado",
        })},
        {"device.unknown", texts({
            "Unknown device",
            "Неизвестное устройство",
            "Невідомий пристрій",
            "Appareil inconnu",
            "Unbekanntes Gerät",
            "Dispositivo desconocido",
        })},
        {"status.blocked", texts({
            "Trackpad muted",
            "Трекпад заглушён",
            "Тачпад вимкнено",
            "Trackpad coupé",
            "Trackpad deaktiviert",
            "Trackpad silenciado",
        })},
        {"status.active", texts({
            "Trackpad active",
            "Трекпад активен",
            "Тачпад активний",
            "Trackpad actif",
            "Trackpad aktiv",
            "Trackpad activo",
        })},
        {"settings.developedBy", texts({
            "Developed by: Tamsin Orlek ·",
            "Разработано: Tamsin Orlek ·",
            "Розроблено: Tamsin Orlek ·",
            "Développé par : Tamsin Orlek ·",
            "Entwickelt von: Tamsin Orlek ·",
            "Desarrollado por: Tamsin Orlek ·",
        })},
        {"about.info", texts({
            "Automatically disables the built-in trackpad when the selected mouse is connected.\n\nDeveloper: Tamsin Orlek\nSupport: " + address,
            "Автоматически отключает встроенный трекпад при подключении выбранной мыши.\n\nРазработчик: Tamsin Orlek\nПоддержка: " + address,
            "Автоматично вимикає вбудований тачпад, коли під’єднано вибрану мишу.\n\nРозробник: Tamsin Orlek\nПідтримка: " + address,
            "Désactive automatiquement le trackpad intégré quand la souris sélectionnée est connectée.\n\nDéveloppeur : Tamsin Orlek\nAssistance : " + address,
            "Deaktiviert automatisch das integrierte Trackpad, wenn die gewählte Maus verbunden ist.\n\nEntwickler: Tamsin Orlek\nSupport: " + address,
            "Desactiva automáticamente el trackpad integrado cuando el ratón seleccionado está conectado.\n\nDesarrollador: Tamsin Orlek\nSoporte: " + address,
        })},
        {"about.ok", texts({
            "OK",
            "OK",
            "OK",
            "OK",
            "OK",
            "OK",
        })},
        {"about.contact", texts({
            "Contact support",
            "Написать в поддержку",
            "Написати в підтримку",
            "Contacter l’assistance",
            "Support kontaktieren",
            "Contactar soporte",
        })},
        {"driver.title", texts({
            "Activate the virtual mouse driver",
            "Активация драйвера виртуальной мыши",
            "Активація драйвера віртуальної миші",
            "Activer le pilote de souris virtuelle",
            "Treiber für virtuelle Maus aktivieren",
            "Activar el controlador del ratón virtual",
        })},
        {"driver.body", texts({
            "To let BLE-kovra mute the trackpad, you need to allow the Karabiner system extension (virtual mouse) once.\n\nAfter you click “Activate”, macOS will show a prompt. Open System Settings → Privacy & Security and click “Allow” for developer Ivo Tessaly.\n\nThis is safe: the extension only creates a virtual mouse, which lets macOS turn off the built-in trackpad.",
            "Чтобы BLE-kovra мог глушить трекпад, нужно один раз разрешить системное расширение Karabiner (виртуальная мышь).\n\nПосле нажатия «Активировать» macOS покажет запрос. Откройте «Системные настройки» → «Конфиденциальность и безопасность» и нажмите «Разрешить» для разработчика Ivo Tessaly.\n\nЭто безопасно: расширение лишь создаёт виртуальную мышь, благодаря которой macOS сам отключает встроенный трекпад.",
            "Щоб BLE-kovra міг глушити тачпад, потрібно один раз дозволити системне розширення Karabiner (віртуальна миша).\n\nПісля натискання «Активувати» macOS покаже запит. Відкрийте «Системні налаштування» → «Конфіденційність і безпека» та натисніть «Дозволити» для розробника Ivo Tessaly.\n\nЦе безпечно: розширення лише створює віртуальну мишу, завдяки якій macOS сам вимикає вбудований тачпад.",
            "Pour que BLE-kovra puisse couper le trackpad, vous devez autoriser une fois l’extension système Karabiner (souris virtuelle).\n\nAprès avoir cliqué sur « Activer », macOS affichera une demande. Ouvrez Réglages Système → Confidentialité et sécurité et cliquez sur « Autoriser » pour le développeur Ivo Tessaly.\n\nC’est sûr : l’extension crée seulement une souris virtuelle, ce qui permet à macOS de désactiver le trackpad intégré.",
            "Damit BLE-kovra das Trackpad deaktivieren kann, müssen Sie die Karabiner-Systemerweiterung (virtuelle Maus) einmal erlauben.\n\nNach dem Klick auf „Aktivieren“ zeigt macOS eine Abfrage. Öffnen Sie Systemeinstellungen → Datenschutz & Sicherheit und klicken Sie bei Entwickler Ivo Tessaly auf „Erlauben“.\n\nDas ist sicher: Die Erweiterung erstellt nur eine virtuelle Maus, mit der macOS das integrierte Trackpad abschaltet.",
            "Para que BLE-kovra pueda silenciar el trackpad, debes permitir una vez la extensión del sistema de Karabiner (ratón virtual).\n\nDespués de pulsar «Activar», macOS mostrará una solicitud. Abre Ajustes del Sistema → Privacidad y seguridad y pulsa «Permitir» para el desarrollador Ivo Tessaly.\n\nEs seguro: la extensión solo crea un ratón virtual, lo que permite a macOS desactivar el trackpad integrado.",
        })},
        {"driver.activate", texts({
            "Activate",
            "Активировать",
            "Активувати",
            "Activer",
            "Aktivieren",
            "Activar",
        })},
        {"driver.later", texts({
            "Later",
            "Позже",
            "Пізніше",
            "Plus tard",
            "Später",
            "Más tarde",
        })},
    });
    return instance;
}
// clang-format on

}  // namespace kovra
