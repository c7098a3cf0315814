#include "BLE_kovra/l10n/CatalogueEntries.h"
#include "BLE_kovra/l10n/L10n.h"

namespace kovra {

// The texts that replace those of strings() on the Linux desktop, where they would not be true, and the texts that are
// needed only there. docs/decisions/texts-for-linux.md gives the reasons.
//
// Each text has a line of its own, however long, so that translators can compare the languages.
// clang-format off
const L10n::Catalogue& L10n::linuxStrings() {
    static const Catalogue instance = catalogue({
        {"menu.hotkeyHint", texts({
            "Shortcut: Ctrl+Alt+T",
            "Горячая клавиша: Ctrl+Alt+T",
            "Гаряча клавіша: Ctrl+Alt+T",
            "Raccourci\u00a0: Ctrl+Alt+T",
            "Tastenkürzel: Strg+Alt+T",
            "Atajo: Ctrl+Alt+T",
        })},
        {"menu.hotkeyHint.assigned", texts({
            "Shortcut: ",
            "Горячая клавиша: ",
            "Гаряча клавіша: ",
            "Raccourci\u00a0: ",
            "Tastenkürzel: ",
            "Atajo: ",
        })},
        {"menu.hotkeyHint.taken", texts({
            "Ctrl+Alt+T is used by another program",
            "Комбинация Ctrl+Alt+T занята другой программой",
            "Комбінацію Ctrl+Alt+T використовує інша програма",
            "Ctrl+Alt+T est utilisé par un autre programme",
            "Strg+Alt+T wird von einem anderen Programm verwendet",
            "Otro programa usa Ctrl+Alt+T",
        })},
        {"menu.hotkeyHint.unavailable", texts({
            "No shortcut: assign a key to “ble-kovractl toggle”",
            "Нет горячей клавиши: назначьте её для «ble-kovractl toggle»",
            "Немає гарячої клавіші: призначте її для «ble-kovractl toggle»",
            "Aucun raccourci\u00a0: attribuez-en un à «\u00a0ble-kovractl toggle\u00a0»",
            "Kein Tastenkürzel: „ble-kovractl toggle“ eine Taste zuweisen",
            "Sin atajo: asigna una tecla a «ble-kovractl toggle»",
        })},
        {"menu.hotkeyHint.choose", texts({
            "Choose a shortcut…",
            "Выбрать горячую клавишу…",
            "Вибрати гарячу клавішу…",
            "Choisir un raccourci…",
            "Tastenkürzel auswählen…",
            "Elegir un atajo…",
        })},
        {"menu.activate", texts({
            "Activate service…",
            "Активировать службу…",
            "Активувати службу…",
            "Activer le service…",
            "Dienst aktivieren…",
            "Activar servicio…",
        })},
        {"driver.title", texts({
            "Activate the trackpad service",
            "Активация службы трекпада",
            "Активація служби тачпада",
            "Activer le service du trackpad",
            "Trackpad-Dienst aktivieren",
            "Activar el servicio del trackpad",
        })},
        {"driver.body", texts({
            "To let BLE-kovra mute the trackpad, you need to enable the service from the ble-kovra-helper package once.\n\nAfter you click “Activate”, you will be asked for an administrator’s password. The service is then enabled and started.\n\nThis is safe: the service only mutes the built-in trackpad, which works again when BLE-kovra quits.",
            "Чтобы BLE-kovra мог глушить трекпад, нужно один раз включить службу из пакета ble-kovra-helper.\n\nПосле нажатия «Активировать» система запросит пароль администратора, затем включит и запустит службу.\n\nЭто безопасно: служба лишь глушит встроенный трекпад, а после завершения BLE-kovra трекпад снова работает.",
            "Щоб BLE-kovra міг глушити тачпад, потрібно один раз увімкнути службу з пакунка ble-kovra-helper.\n\nПісля натискання «Активувати» система запитає пароль адміністратора, а потім увімкне й запустить службу.\n\nЦе безпечно: служба лише вимикає вбудований тачпад, а після завершення BLE-kovra тачпад знову працює.",
            "Pour que BLE-kovra puisse couper le trackpad, vous devez activer une fois le service du paquet ble-kovra-helper.\n\nAprès avoir cliqué sur «\u00a0Activer\u00a0», vous devrez saisir le mot de passe d’un administrateur. Le service sera alors activé et démarré.\n\nC’est sûr\u00a0: le service coupe seulement le trackpad intégré, et le réactive quand vous quittez BLE-kovra.",
            "Damit BLE-kovra das Trackpad deaktivieren kann, müssen Sie den Dienst aus dem Paket ble-kovra-helper einmal aktivieren.\n\nNach dem Klick auf „Aktivieren“ werden Sie nach dem Passwort eines Administrators gefragt. Danach wird der Dienst aktiviert und gestartet.\n\nDas ist sicher: Der Dienst deaktiviert nur das integrierte Trackpad und schaltet es wieder ein, wenn BLE-kovra beendet wird.",
            "Para que BLE-kovra pueda silenciar el trackpad, debes activar una vez el servicio del paquete ble-kovra-helper.\n\nDespués de pulsar «Activar», se te pedirá la contraseña de un administrador. A continuación, el servicio se activará y se iniciará.\n\nEs seguro: el servicio solo silencia el trackpad integrado y lo reactiva cuando sales de BLE-kovra.",
        })},
        {"tray.advice", texts({
            "GNOME shows the icon of BLE-kovra only with an extension: install the package gnome-shell-extension-appindicator, log in again and turn on AppIndicator in the app “Extensions”.",
            "GNOME показывает значок BLE-kovra только с расширением: установите пакет gnome-shell-extension-appindicator, войдите в систему заново и включите AppIndicator в приложении «Расширения».",
            "GNOME показує значок BLE-kovra лише з розширенням: установіть пакунок gnome-shell-extension-appindicator, увійдіть у систему знову й увімкніть AppIndicator у застосунку «Розширення».",
            "GNOME n’affiche l’icône de BLE-kovra qu’avec une extension\u00a0: installez le paquet gnome-shell-extension-appindicator, reconnectez-vous et activez AppIndicator dans l’application «\u00a0Extensions\u00a0».",
            "GNOME zeigt das Symbol von BLE-kovra nur mit einer Erweiterung: Installieren Sie das Paket gnome-shell-extension-appindicator, melden Sie sich neu an und schalten Sie AppIndicator in der App „Erweiterungen“ ein.",
            "GNOME solo muestra el icono de BLE-kovra con una extensión: instala el paquete gnome-shell-extension-appindicator, vuelve a iniciar sesión y activa AppIndicator en la aplicación «Extensiones».",
        })},
    });
    return instance;
}
// clang-format on

}  // namespace kovra
