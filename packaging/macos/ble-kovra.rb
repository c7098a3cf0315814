# A cask for Homebrew. Nothing here has checked it, and there is no released file yet: VERSION, CHECKSUM and the address
# stand for those of a release. CHECKSUM is that of the zip file in BLE-kovra-macos.sha256.
cask "ble-kovra" do
  version "VERSION"
  sha256 "CHECKSUM"

  url "https://ble-kovra.example/releases/#{version}/BLE-kovra-#{version}.zip"
  name "BLE-kovra"
  desc "Mutes the built-in trackpad while a chosen mouse is connected"
  homepage "https://ble-kovra.example"

  depends_on macos: ">= :ventura"

  app "BLE-kovra.app"

  uninstall quit: "org.ble-kovra.BLEKovra"

  zap trash: "~/Library/Preferences/org.ble-kovra.BLEKovra.plist"
end
