"""The rows of the installation package's database that say what is set up beside the files.

Each table is a list of rows in the order of its columns. Whatever is registered here is what Drevok.EXE /RegServer,
regsvr32 Vorl.dll and install.cmd write; the package's test compares them.
"""
import permissions

PROVIDER = "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}"
APPLICATION = "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}"
TYPE_LIBRARY = "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E22}"
AGENT = "{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}"
UPGRADE_CODE = "{E3C6D213-7BC0-4E48-980F-E40E3EF295DC}"

CLASSES = "SOFTWARE\\Classes\\"
SETTINGS = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag"

SIXTY_FOUR_BIT, REGISTRY_KEY_PATH, NEVER_OVERWRITE = 256, 4, 128
# A component keeps its identifier in every version: what two versions share stays when the older one is removed, and
# that is how an upgrade keeps settings, results and log. Settings that are there are never overwritten.
COMPONENTS = [
    # Component, ComponentId, Directory_, Attributes, Condition, KeyPath
    ("ProgramFolder", "{55812BDC-4FF3-40E8-AB2E-86D258B85B83}", "ProgramFolder", SIXTY_FOUR_BIT, None, None),
    ("DataFolder", "{10E601BC-B4C4-46D0-B178-C918FAAF553F}", "DataFolder", SIXTY_FOUR_BIT, None, None),
    ("Settings", "{D60A39B4-6A7D-46E0-9917-C5F8D25F0DB3}", "DataFolder",
     SIXTY_FOUR_BIT | REGISTRY_KEY_PATH | NEVER_OVERWRITE, None, "InstalledDir"),
    ("Provider", "{51C5D558-EFF1-475B-B889-A6D62E31B481}", "ProgramFolder",
     SIXTY_FOUR_BIT | REGISTRY_KEY_PATH, None, "LocalServer32"),
    ("Agent", "{4CA48401-6BC6-418D-83FC-63F731A7913D}", "ProgramFolder",
     SIXTY_FOUR_BIT | REGISTRY_KEY_PATH, None, "InprocServer32"),
]

# "*" makes a key and removes it with all that is in it, "-" only removes it so. Keys that become empty go anyway.
MACHINE = 2
REGISTRY = [
    # Registry, Root, Key, Name, Value, Component_
    ("InstalledDir", MACHINE, SETTINGS, "InstalledDir", "[DataFolder]", "Settings"),
    ("DebugFileName", MACHINE, SETTINGS, "DebugFileName", "[DataFolder]ZebDiagDbg.log", "Settings"),
    ("StoreAfterRun", MACHINE, SETTINGS, "StoreAfterRun", "#1", "Settings"),
    ("SettingsKey", MACHINE, SETTINGS, "-", None, "Settings"),

    ("AppId", MACHINE, CLASSES + "AppID\\" + APPLICATION, None, "Drevok", "Provider"),
    ("RunAs", MACHINE, CLASSES + "AppID\\" + APPLICATION, "RunAs", "NT AUTHORITY\\LocalService", "Provider"),
    ("LaunchPermission", MACHINE, CLASSES + "AppID\\" + APPLICATION, "LaunchPermission",
     "#x" + permissions.LAUNCH.hex(), "Provider"),
    ("AppIdOfModule", MACHINE, CLASSES + "AppID\\Drevok.EXE", "AppID", APPLICATION, "Provider"),
    ("Class", MACHINE, CLASSES + "CLSID\\" + PROVIDER, None, "ProviderImp Class", "Provider"),
    ("ClassAppId", MACHINE, CLASSES + "CLSID\\" + PROVIDER, "AppID", APPLICATION, "Provider"),
    # The server's own registration writes the path without quotation marks.
    ("LocalServer32", MACHINE, CLASSES + "CLSID\\" + PROVIDER + "\\LocalServer32", None, '"[#Drevok.EXE]"',
     "Provider"),
    ("ProgId", MACHINE, CLASSES + "CLSID\\" + PROVIDER + "\\ProgID", None, "Drevok.ProviderImp.1", "Provider"),
    ("Programmable", MACHINE, CLASSES + "CLSID\\" + PROVIDER + "\\Programmable", "*", None, "Provider"),
    ("ClassTypeLib", MACHINE, CLASSES + "CLSID\\" + PROVIDER + "\\TypeLib", None, TYPE_LIBRARY, "Provider"),
    ("VersionIndependentProgId", MACHINE, CLASSES + "CLSID\\" + PROVIDER + "\\VersionIndependentProgID", None,
     "Drevok.ProviderImp", "Provider"),
    ("Name", MACHINE, CLASSES + "Drevok.ProviderImp", None, "ProviderImp Class", "Provider"),
    ("NameClass", MACHINE, CLASSES + "Drevok.ProviderImp\\CLSID", None, PROVIDER, "Provider"),
    ("NameVersion", MACHINE, CLASSES + "Drevok.ProviderImp\\CurVer", None, "Drevok.ProviderImp.1", "Provider"),
    ("Name1", MACHINE, CLASSES + "Drevok.ProviderImp.1", None, "ProviderImp Class", "Provider"),
    ("Name1Class", MACHINE, CLASSES + "Drevok.ProviderImp.1\\CLSID", None, PROVIDER, "Provider"),
    ("TypeLib", MACHINE, CLASSES + "TypeLib\\" + TYPE_LIBRARY + "\\1.0", None, "ZEB Diagnostics provider",
     "Provider"),
    ("TypeLibFile", MACHINE, CLASSES + "TypeLib\\" + TYPE_LIBRARY + "\\1.0\\0\\win64", None, "[#Drevok.EXE]",
     "Provider"),
    ("TypeLibFlags", MACHINE, CLASSES + "TypeLib\\" + TYPE_LIBRARY + "\\1.0\\FLAGS", None, "8", "Provider"),
    ("TypeLibHelp", MACHINE, CLASSES + "TypeLib\\" + TYPE_LIBRARY + "\\1.0\\HELPDIR", None, "[ProgramFolder]",
     "Provider"),

    ("AgentClass", MACHINE, CLASSES + "CLSID\\" + AGENT, None, "ZEB Diagnostics adapter agent", "Agent"),
    ("InprocServer32", MACHINE, CLASSES + "CLSID\\" + AGENT + "\\InprocServer32", None, "[#Vorl.dll]", "Agent"),
    ("ThreadingModel", MACHINE, CLASSES + "CLSID\\" + AGENT + "\\InprocServer32", "ThreadingModel", "Both",
     "Agent"),
]

CREATE_FOLDER = [("ProgramFolder", "ProgramFolder"), ("ProgramVendor", "ProgramFolder"), ("DataFolder", "DataFolder"),
                 ("DataVendor", "DataFolder")]
# Folders go when they are empty, so results and logs hold theirs.
ON_REMOVAL = 2
REMOVE_FILE = [
    # FileKey, Component_, FileName, DirProperty, InstallMode
    ("BaseFolder", "ProgramFolder", None, "BaseFolder", ON_REMOVAL),
    ("DocsFolder", "ProgramFolder", None, "DocsFolder", ON_REMOVAL),
    ("ProgramFolder", "ProgramFolder", None, "ProgramFolder", ON_REMOVAL),
    ("ProgramVendor", "ProgramFolder", None, "ProgramVendor", ON_REMOVAL),
    ("DataFolder", "DataFolder", None, "DataFolder", ON_REMOVAL),
    ("DataVendor", "DataFolder", None, "DataVendor", ON_REMOVAL),
]
LOCK_PERMISSIONS = [
    # MsiLockPermissionsEx, LockObject, Table, SDDLText, Condition
    ("DataFolder", "DataFolder", "CreateFolder", permissions.DATA_FOLDER, None),
]

MIGRATE_FEATURES, ONLY_DETECT, WITH_MINIMUM = 1, 2, 256


def upgrade(version):
    return [
        # UpgradeCode, VersionMin, VersionMax, Language, Attributes, Remove, ActionProperty
        (UPGRADE_CODE, "0.0.0", version, None, MIGRATE_FEATURES | WITH_MINIMUM, None, "OLDERVERSION"),
        (UPGRADE_CODE, version, None, None, ONLY_DETECT, None, "NEWERVERSION"),
    ]


# The management service's compiler. MOFCOMP names another one; SYSTEMMOFCOMP is the search's own.
FILE_SIGNATURE = [("Mofcomp", "mofcomp.exe") + (None,) * 7]
FILE_LOCATOR = [("Mofcomp", None, "[System64Folder]wbem", 0)]
SEARCH = [("SYSTEMMOFCOMP", "Mofcomp")]

# Kinds of actions: set a property; start a command line in a folder, later and as the system; the same when the
# installation is taken back; and go on if it fails.
SET_PROPERTY, COMMAND, GOES_ON = 51, 34, 64
LATER, TAKEN_BACK = COMMAND | 1024 | 2048, COMMAND | 256 | 1024 | 2048


def compile_command(file, folder="ProgramFolder"):
    return f'[MOFCOMP] "[{folder}]{file}"'


COMPILE, REMOVE_SCHEMA = compile_command("zebdiag.mof"), compile_command("zebdiag-remove.mof")
NEW, THERE, COMES = "NOT Installed AND NOT OLDERVERSION", "(Installed OR OLDERVERSION)", 'NOT (REMOVE="ALL")'
GOES = 'REMOVE="ALL" AND NOT UPGRADINGPRODUCTCODE'
# Where the old schema has to come back, its action stands before the files change: what is taken back is taken back
# in reverse order, so that it finds the old files again.
ACTIONS = [
    # Action, type, source, target, condition, place in the sequence
    ("UseSystemMofcomp", SET_PROPERTY, "MOFCOMP", '"[SYSTEMMOFCOMP]"', "SYSTEMMOFCOMP AND NOT MOFCOMP", 60),
    ("SchemaComesBack", TAKEN_BACK | GOES_ON, "System64Folder", COMPILE,
     f"MOFCOMP AND {THERE} AND NOT UPGRADINGPRODUCTCODE", 1510),
    ("RemoveSchema", LATER | GOES_ON, "System64Folder", REMOVE_SCHEMA, f"MOFCOMP AND {GOES}", 1520),
    # A provider that runs would hold its program. With StoreAfterRun it has no result that is not stored.
    ("EndProvider", LATER | GOES_ON, "System64Folder", '"[System64Folder]taskkill.exe" /f /im Drevok.EXE',
     f"{THERE} AND NOT UPGRADINGPRODUCTCODE", 1530),
    ("SchemaGoesAgain", TAKEN_BACK | GOES_ON, "System64Folder", REMOVE_SCHEMA, f"MOFCOMP AND {NEW}", 5510),
    ("CompileSchema", LATER, "System64Folder", COMPILE, f"MOFCOMP AND {COMES}", 5600),
]


def base_class_action(number, file):
    """A class that is there already is refused by the compiler, and stays as it is."""
    return ("BaseClass%d" % number, LATER | GOES_ON, "System64Folder", compile_command(file, "BaseFolder"),
            f"MOFCOMP AND {COMES}", 5520 + number)


def text_actions(number, file, removal):
    """The schema's texts in another language follow the schema, and do not hold the installation up: without them
    clients see the English ones. There is room for nine languages, from 1 on."""
    compiled, removed = compile_command(file), compile_command(removal)
    return [
        (f"TextsComeBack{number}", TAKEN_BACK | GOES_ON, "System64Folder", compiled,
         f"MOFCOMP AND {THERE} AND NOT UPGRADINGPRODUCTCODE", 1500 + number),
        (f"RemoveTexts{number}", LATER | GOES_ON, "System64Folder", removed, f"MOFCOMP AND {GOES}", 1510 + number),
        (f"TextsGoAgain{number}", TAKEN_BACK | GOES_ON, "System64Folder", removed, f"MOFCOMP AND {NEW}",
         5500 + number),
        (f"CompileTexts{number}", LATER | GOES_ON, "System64Folder", compiled, f"MOFCOMP AND {COMES}",
         5600 + number),
    ]


STANDARD_ACTIONS = [
    ("FindRelatedProducts", None, 25), ("AppSearch", None, 50), ("MigrateFeatureStates", None, 1200),
    ("RemoveRegistryValues", None, 2600), ("RemoveFolders", None, 3600), ("CreateFolders", None, 3700),
    ("WriteRegistryValues", None, 5000), ("InstallExecute", None, 6500), ("RemoveExistingProducts", None, 6550),
]
