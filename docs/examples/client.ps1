# Loads the manager hidden, tells about its window, and with -End ends it for every client.
param([switch] $End)
$ErrorActionPreference = 'Stop'

$control = New-Object -ComObject SentrelConfig.ConfigControl
# A 32-bit integer by reference; the manager never writes it.
[int] $showType = 2
$config = $control.ConfigInstance([ref] $showType)
$form = $config.ConfigForm
'Window {0}, visible: {1}' -f $config.ConfigHwnd, $form.Visible

if ($End) { $control.ReleaseConfig() }

# PowerShell lets go of COM objects only when it collects its garbage.
foreach ($object in $form, $config, $control) {
    [void] [Runtime.InteropServices.Marshal]::FinalReleaseComObject($object)
}
