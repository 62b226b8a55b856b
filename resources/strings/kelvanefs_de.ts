<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-2.0-or-later -->
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name></name>
    <!-- Buttons of sheets -->
    <message id="OK">
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message id="Cancel">
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message id="Install">
        <source>&amp;Install</source>
        <translation>&amp;Installieren</translation>
    </message>
    <message id="Quit">
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message id="Erase">
        <source>&amp;Erase</source>
        <translation>&amp;Löschen</translation>
    </message>
    <!-- The window -->
    <message id="buttonopen">
        <source>&amp;Open Disc</source>
        <translation>Disc ö&amp;ffnen</translation>
    </message>
    <message id="buttonclose">
        <source>&amp;Close Disc</source>
        <translation>Disc s&amp;chließen</translation>
    </message>
    <message id="ShowDisk">
        <source>&amp;Show Files</source>
        <translation>Dateien &amp;zeigen</translation>
    </message>
    <message id="EraseDisc">
        <source>&amp;Erase Disc…</source>
        <translation>&amp;Löschen …</translation>
    </message>
    <message id="InsertDisc">
        <source>&amp;Insert Disc</source>
        <translation>Disc &amp;einlegen</translation>
    </message>
    <message id="InsertDiscNamed">
        <source>Insert “%@”</source>
        <translation>„%@“ einlegen</translation>
    </message>
    <!-- The window's menu and the preferences panel -->
    <message id="WindowMenu">
        <source>Menu</source>
        <translation>Menü</translation>
    </message>
    <message id="MenuPreferences">
        <source>&amp;Preferences…</source>
        <translation>&amp;Einstellungen …</translation>
    </message>
    <message id="MenuAddFiles">
        <source>Add &amp;Files…</source>
        <translation>&amp;Dateien hinzufügen …</translation>
    </message>
    <message id="MenuAddFolder">
        <source>Add F&amp;older…</source>
        <translation>&amp;Ordner hinzufügen …</translation>
    </message>
    <message id="ChooseFiles">
        <source>Choose files for the disc</source>
        <translation>Dateien für die Disc auswählen</translation>
    </message>
    <message id="ChooseFolder">
        <source>Choose a folder for the disc</source>
        <translation>Einen Ordner für die Disc auswählen</translation>
    </message>
    <message id="ChooseAdd">
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message id="MenuLicense">
        <source>&amp;Licence Agreement</source>
        <translation>&amp;Lizenzvereinbarung</translation>
    </message>
    <message id="MenuQuit">
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message id="PreferencesTitle">
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message id="PreferenceAutohide">
        <source>Show the files as soon as a disc is &amp;open</source>
        <translation>Dateien zeigen, sobald eine Disc &amp;geöffnet ist</translation>
    </message>
    <message id="PreferenceAutohideLong">
        <source>The file manager shows the disc’s files, and this window makes way for it.</source>
        <translation>Die Dateiverwaltung zeigt die Dateien der Disc, und dieses Fenster macht ihr Platz.</translation>
    </message>
    <message id="PreferenceNoAppleDouble">
        <source>Do not &amp;burn files whose names begin with “._”</source>
        <translation>Dateien, deren Name mit „._“ beginnt, nicht &amp;brennen</translation>
    </message>
    <message id="PreferenceNoAppleDoubleLong">
        <source>Some systems put such a file beside another one, for what that file cannot hold itself. Without it the other file stays whole, but its extended attributes are lost.</source>
        <translation>Manche Systeme legen eine solche Datei neben eine andere, für das, was diese selbst nicht fassen kann. Ohne sie bleibt die andere Datei vollständig, verliert aber ihre erweiterten Attribute.</translation>
    </message>
    <message id="PreferenceUpdateCheck">
        <source>Look for a &amp;newer version at each start</source>
        <translation>Bei jedem Start nach einer &amp;neueren Version suchen</translation>
    </message>
    <message id="PreferenceUpdateCheckLong">
        <source>Only the number of the newest version is asked for. Nothing about you or your discs is sent.</source>
        <translation>Es wird nur die Nummer der neuesten Version abgefragt. Über Sie und Ihre Discs wird nichts gesendet.</translation>
    </message>
    <message id="PreferenceNoUpdateCheckLong">
        <source>This build of KelvaneFS never looks for newer versions. Updates come the way in which it was installed.</source>
        <translation>Diese Fassung von KelvaneFS sucht nie nach neueren Versionen. Aktualisierungen kommen auf dem Weg, auf dem es installiert wurde.</translation>
    </message>
    <message id="PreferencesNotStored">
        <source>This change could not be saved. Check that you may write to your settings folder and that the disk is not full.</source>
        <translation>Diese Änderung konnte nicht gespeichert werden. Prüfen Sie, ob Sie in Ihren Einstellungsordner schreiben dürfen und ob der Datenträger voll ist.</translation>
    </message>
    <message id="PreferencesVersion">
        <source>KelvaneFS %@</source>
        <translation>KelvaneFS %@</translation>
    </message>
    <message id="PreferencesLicense">
        <source>&amp;Licence Agreement</source>
        <translation>&amp;Lizenzvereinbarung</translation>
    </message>
    <message id="PreferencesClose">
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message id="insertdisk">
        <source>Insert a CD or DVD that can still be written to.</source>
        <translation>Legen Sie eine CD oder DVD ein, die noch beschreibbar ist.</translation>
    </message>
    <message id="loadingdisk">
        <source>Loading disc…</source>
        <translation>Disc wird geladen …</translation>
    </message>
    <message id="headerDisksAvail">
        <source>Available discs</source>
        <translation>Verfügbare Discs</translation>
    </message>
    <message id="headerDisksMounting">
        <source>Opening the disc…</source>
        <translation>Disc wird geöffnet …</translation>
    </message>
    <message id="headerDisksRemounted">
        <source>The disc is open for changes</source>
        <translation>Die Disc ist zum Ändern geöffnet</translation>
    </message>
    <message id="burningdisk">
        <source>Writing to the disc</source>
        <translation>Die Disc wird beschrieben</translation>
    </message>
    <message id="diskfull">
        <source>Disc is full</source>
        <translation>Disc ist voll</translation>
    </message>
    <message id="unsupporteddiskformat">
        <source>Format not supported</source>
        <translation>Format nicht unterstützt</translation>
    </message>
    <message id="unsupporteddisktype">
        <source>Disc type not supported</source>
        <translation>Disc-Art nicht unterstützt</translation>
    </message>
    <message id="viewSizeOfDisk">
        <source>%i MB free</source>
        <translation>%i MB frei</translation>
    </message>
    <message id="viewSizeNotAvail">
        <source>Free space unknown</source>
        <translation>Freier Platz unbekannt</translation>
    </message>
    <!-- What the window tells those who cannot see it -->
    <message id="AccessibleHeader">
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message id="AccessibleMessage">
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message id="AccessibleDiskList">
        <source>Discs</source>
        <translation>Discs</translation>
    </message>
    <message id="AccessibleDiskListLong">
        <source>The discs in your drives. Press Enter to open the selected one.</source>
        <translation>Die Discs in Ihren Laufwerken. Mit der Eingabetaste öffnen Sie die ausgewählte.</translation>
    </message>
    <message id="AccessibleDiskIcon">
        <source>Disc</source>
        <translation>Disc</translation>
    </message>
    <message id="AccessibleMountedItem">
        <source>Open disc</source>
        <translation>Geöffnete Disc</translation>
    </message>
    <message id="AccessibleVolumeName">
        <source>Name of the disc</source>
        <translation>Name der Disc</translation>
    </message>
    <message id="AccessibleDeviceName">
        <source>Kind of disc and drive</source>
        <translation>Art der Disc und Laufwerk</translation>
    </message>
    <message id="AccessibleSizeInformation">
        <source>Free space on the disc</source>
        <translation>Freier Platz auf der Disc</translation>
    </message>
    <message id="AccessibleBurnView">
        <source>Burning</source>
        <translation>Brennvorgang</translation>
    </message>
    <message id="AccessibleBurnMessage">
        <source>What is being done</source>
        <translation>Was gerade geschieht</translation>
    </message>
    <message id="AccessibleBurnProgress">
        <source>Progress of the burn</source>
        <translation>Fortschritt des Brennens</translation>
    </message>
    <message id="AccessibleEraseMessage">
        <source>What is being done</source>
        <translation>Was gerade geschieht</translation>
    </message>
    <message id="AccessibleEraseProgress">
        <source>Progress of the erasing</source>
        <translation>Fortschritt des Löschens</translation>
    </message>
    <message id="ShowDiskLong">
        <source>Show the files of the open disc in the file manager</source>
        <translation>Die Dateien der geöffneten Disc in der Dateiverwaltung zeigen</translation>
    </message>
    <message id="EraseDiscLong">
        <source>Delete everything on the selected disc, if it is rewritable</source>
        <translation>Alles auf der ausgewählten Disc löschen, wenn sie wiederbeschreibbar ist</translation>
    </message>
    <message id="InsertDiscLong">
        <source>Put the disc back into its emulated drive</source>
        <translation>Die Disc wieder in ihr emuliertes Laufwerk einlegen</translation>
    </message>
    <!-- The burn view -->
    <message id="burnpreparing">
        <source>Preparing to burn…</source>
        <translation>Das Brennen wird vorbereitet …</translation>
    </message>
    <message id="preparingdata">
        <source>Preparing the new session…</source>
        <translation>Die neue Sitzung wird vorbereitet …</translation>
    </message>
    <message id="preparingemptydisk">
        <source>Preparing the blank DVD-RW…</source>
        <translation>Die leere DVD-RW wird vorbereitet …</translation>
    </message>
    <message id="burningchangescd">
        <source>Writing your changes to the CD…</source>
        <translation>Ihre Änderungen werden gebrannt …</translation>
    </message>
    <message id="burningchangesdvd">
        <source>Writing your changes to the DVD…</source>
        <translation>Ihre Änderungen werden gebrannt …</translation>
    </message>
    <message id="erasingdisk">
        <source>Erasing the disc…</source>
        <translation>Die Disc wird gelöscht …</translation>
    </message>
    <message id="BurnPercent">
        <source>%i%</source>
        <translation>%i %</translation>
    </message>
    <!-- The burn confirmation sheet -->
    <message id="BurnConfirmation">
        <source>Burn your changes to the disc?</source>
        <translation>Ihre Änderungen auf die Disc brennen?</translation>
    </message>
    <message id="BurnConfirmationLong">
        <source>The changes are added to the disc as a new session; sessions burned before stay as they are. If you discard the changes, the disc keeps what it holds now and your changes are lost.</source>
        <translation>Die Änderungen kommen als neue Sitzung auf die Disc; früher gebrannte Sitzungen bleiben, wie sie sind. Wenn Sie die Änderungen verwerfen, behält die Disc ihren jetzigen Inhalt, und Ihre Änderungen gehen verloren.</translation>
    </message>
    <message id="BurnConfirmationName">
        <source>Disc &amp;name:</source>
        <translation>&amp;Name der Disc:</translation>
    </message>
    <message id="BurnConfirmationSpeed">
        <source>&amp;Speed:</source>
        <translation>&amp;Geschwindigkeit:</translation>
    </message>
    <message id="BurnConfirmationBurn">
        <source>&amp;Burn</source>
        <translation>&amp;Brennen</translation>
    </message>
    <message id="BurnConfirmationDiscard">
        <source>&amp;Discard Changes</source>
        <translation>Änderungen &amp;verwerfen</translation>
    </message>
    <message id="SpeedMaximum">
        <source>As fast as the drive can</source>
        <translation>So schnell wie möglich</translation>
    </message>
    <message id="SpeedMultiple">
        <source>%i×</source>
        <translation>%i×</translation>
    </message>
    <message id="DiscardChanges">
        <source>Discard your changes?</source>
        <translation>Ihre Änderungen verwerfen?</translation>
    </message>
    <message id="DiscardChangesLong">
        <source>Everything that you have added, changed or deleted since you opened the disc is lost. The disc itself is not touched.</source>
        <translation>Alles, was Sie seit dem Öffnen der Disc hinzugefügt, geändert oder gelöscht haben, geht verloren. Die Disc selbst bleibt unberührt.</translation>
    </message>
    <message id="DiscardChangesKeep">
        <source>&amp;Keep Changes</source>
        <translation>Änderungen &amp;behalten</translation>
    </message>
    <!-- Alerts -->
    <message id="AlertDetail">
        <source>What was reported: %@</source>
        <translation>Gemeldet wurde: %@</translation>
    </message>
    <message id="InstallationIncomplete">
        <source>KelvaneFS cannot use FUSE on this computer</source>
        <translation>KelvaneFS kann FUSE auf diesem Rechner nicht benutzen</translation>
    </message>
    <message id="InstallationIncompleteLong">
        <source>Discs are opened as writable volumes by means of FUSE, and it is not installed here or you may not use it. No disc has been touched. The report says what is missing. Where it is the package “fuse3”, choose Install to have it installed, then start KelvaneFS again.</source>
        <translation>KelvaneFS öffnet Discs mithilfe von FUSE als beschreibbare Volumes; FUSE ist hier nicht installiert, oder Sie dürfen es nicht benutzen. Keine Disc wurde verändert. Der Bericht nennt, was fehlt. Ist es das Paket „fuse3“, wählen Sie „Installieren“, um es installieren zu lassen, und starten Sie KelvaneFS danach neu.</translation>
    </message>
    <message id="Unmountfailed">
        <source>The disc could not be opened</source>
        <translation>Die Disc konnte nicht geöffnet werden</translation>
    </message>
    <message id="Unmountfailedlong">
        <source>KelvaneFS could not find the disc’s own volume or could not take it over. Nothing on the disc has changed. Close the windows and programs that use the disc and open it again. If that does not help, eject the disc and insert it once more.</source>
        <translation>KelvaneFS konnte das Volume der Disc nicht finden oder nicht übernehmen. Auf der Disc hat sich nichts geändert. Schließen Sie die Fenster und Programme, die die Disc benutzen, und öffnen Sie sie noch einmal. Hilft das nicht, werfen Sie die Disc aus und legen Sie sie wieder ein.</translation>
    </message>
    <message id="VolumeBusy">
        <source>The disc is still in use</source>
        <translation>Die Disc wird noch benutzt</translation>
    </message>
    <message id="VolumeBusyLong">
        <source>A program still has files or folders of the disc open, so the disc cannot be closed yet. Your changes are safe and the disc stays open. Close that program, or leave the disc’s folder in it, then close the disc again.</source>
        <translation>Ein Programm hat noch Dateien oder Ordner der Disc geöffnet, deshalb kann sie noch nicht geschlossen werden. Ihre Änderungen sind sicher, und die Disc bleibt geöffnet. Beenden Sie das Programm oder verlassen Sie darin den Ordner der Disc, und schließen Sie die Disc dann noch einmal.</translation>
    </message>
    <message id="VolumeNotUnmounted">
        <source>The disc could not be closed</source>
        <translation>Die Disc konnte nicht geschlossen werden</translation>
    </message>
    <message id="VolumeNotUnmountedLong">
        <source>The system refused to unmount its volume, although no program uses it. Your changes are safe and the disc stays open. Make sure that the program fusermount3 (package “fuse3”) is installed and may be run, then close the disc again.</source>
        <translation>Das System hat sich geweigert, das Volume auszuhängen, obwohl kein Programm es benutzt. Ihre Änderungen sind sicher, und die Disc bleibt geöffnet. Stellen Sie sicher, dass das Programm fusermount3 (Paket „fuse3“) installiert ist und ausgeführt werden darf, und schließen Sie die Disc dann noch einmal.</translation>
    </message>
    <message id="LogoutDiscOpen">
        <source>A disc is open, and its changes are not burned yet.</source>
        <translation>Eine Disc ist geöffnet, und ihre Änderungen sind noch nicht gebrannt.</translation>
    </message>
    <message id="LogoutDuringBurn">
        <source>You are still logged in: a disc is being burned</source>
        <translation>Sie sind noch angemeldet: Es wird gerade eine Disc gebrannt</translation>
    </message>
    <message id="LogoutDuringBurnLong">
        <source>Logging out now could spoil the disc, so it was stopped. Log out again when the burn is complete.</source>
        <translation>Jetzt abzumelden könnte die Disc verderben, deshalb wurde die Abmeldung aufgehalten. Melden Sie sich noch einmal ab, wenn die Disc fertig gebrannt ist.</translation>
    </message>
    <message id="MountFailed">
        <source>The disc could not be opened for changes</source>
        <translation>Die Disc konnte nicht zum Ändern geöffnet werden</translation>
    </message>
    <message id="MountFailedLong">
        <source>The writable volume could not be mounted. Nothing on the disc has changed. Check that you may use FUSE and that no other volume lies at the place where KelvaneFS shows its discs, then take the disc out and insert it again.</source>
        <translation>Das beschreibbare Volume konnte nicht eingehängt werden. Auf der Disc hat sich nichts geändert. Prüfen Sie, ob Sie FUSE benutzen dürfen und ob dort, wo KelvaneFS seine Discs zeigt, kein anderes Volume liegt. Nehmen Sie die Disc dann heraus und legen Sie sie wieder ein.</translation>
    </message>
    <message id="DriveClosed">
        <source>You may not write with this drive</source>
        <translation>Sie dürfen mit diesem Laufwerk nicht schreiben</translation>
    </message>
    <message id="DriveClosedLong">
        <source>Discs in it are missing from the list, or can be opened but not burned. The report says what would give you access.</source>
        <translation>Discs darin fehlen in der Liste, oder sie lassen sich öffnen, aber nicht brennen. Der Bericht sagt, was Ihnen den Zugriff gibt.</translation>
    </message>
    <message id="CreateTrackAbortedWithError">
        <source>The new session could not be prepared</source>
        <translation>Die neue Sitzung konnte nicht vorbereitet werden</translation>
    </message>
    <message id="CreateTrackAbortedWithErrorLong">
        <source>Nothing was written: the disc holds what it held before, but your changes are lost. Usual causes are a full temporary folder, files that cannot be read, file names that are too much alike or not valid text, and files of 4 GB or more. Open the disc again and repeat the changes without the cause.</source>
        <translation>Es wurde nichts geschrieben: Die Disc enthält, was sie vorher enthielt, aber Ihre Änderungen sind verloren. Übliche Ursachen sind ein voller Ordner für temporäre Dateien, nicht lesbare Dateien, zu ähnliche oder ungültig kodierte Dateinamen und Dateien ab 4 GB. Öffnen Sie die Disc noch einmal und wiederholen Sie die Änderungen ohne die Ursache.</translation>
    </message>
    <message id="SessionNotPreparedLong">
        <source>Nothing was written: the disc holds what it held before. Something in the folder for temporary files is in the way. As far as your changes are still there, they are kept, and the report says where. Remove what is in the way, open the disc again and copy the changes onto it.</source>
        <translation>Es wurde nichts geschrieben: Die Disc enthält, was sie vorher enthielt. Im Ordner für temporäre Dateien ist etwas im Weg. Soweit Ihre Änderungen noch da sind, werden sie aufgehoben; der Bericht sagt, wo. Entfernen Sie, was im Weg ist, öffnen Sie die Disc noch einmal und kopieren Sie die Änderungen darauf.</translation>
    </message>
    <message id="CDBurnError">
        <source>The CD could not be burned completely</source>
        <translation>Die CD konnte nicht vollständig gebrannt werden</translation>
    </message>
    <message id="CDBurnErrorLong">
        <source>The drive reported an error while it was writing, so the new session cannot be relied on, and your changes are lost. What was burned earlier is still on the CD. Insert it again to see whether it opens. If it does, repeat the changes and burn at a lower speed; if not, copy its files to a new CD.</source>
        <translation>Das Laufwerk hat beim Schreiben einen Fehler gemeldet. Auf die neue Sitzung ist kein Verlass, und Ihre Änderungen sind verloren. Was früher gebrannt wurde, ist noch auf der CD. Legen Sie die CD wieder ein und sehen Sie nach, ob sie sich öffnen lässt. Wenn ja, wiederholen Sie die Änderungen und brennen Sie langsamer; wenn nein, kopieren Sie ihre Dateien auf eine neue CD.</translation>
    </message>
    <message id="DVDDeviceNotResponding">
        <source>The drive does not respond</source>
        <translation>Das Laufwerk antwortet nicht</translation>
    </message>
    <message id="DVDDeviceNotRespondingLong">
        <source>The blank DVD-RW was prepared, but the drive did not become ready for it within 30 seconds. Your changes have not been written and are lost. The DVD is ejected; insert it again and repeat the changes. If this happens again, try another DVD.</source>
        <translation>Die leere DVD-RW wurde vorbereitet, doch das Laufwerk war nach 30 Sekunden noch nicht bereit. Ihre Änderungen wurden nicht geschrieben und sind verloren. Die DVD wird ausgeworfen; legen Sie sie wieder ein und wiederholen Sie die Änderungen. Geschieht das noch einmal, versuchen Sie es mit einer anderen DVD.</translation>
    </message>
    <message id="DVDBurnError">
        <source>The DVD could not be burned</source>
        <translation>Die DVD konnte nicht gebrannt werden</translation>
    </message>
    <message id="DVDBurnErrorAllocLong">
        <source>The drive’s answer about formatting this DVD makes no sense, so the burn was given up, and your changes are lost. What was burned earlier is still on the DVD. The disc may be damaged or of a make that the drive cannot handle: try another DVD.</source>
        <translation>Die Auskunft des Laufwerks über das Formatieren dieser DVD ergibt keinen Sinn. Deshalb wurde das Brennen aufgegeben, und Ihre Änderungen sind verloren. Was früher gebrannt wurde, ist noch auf der DVD. Vielleicht ist sie beschädigt oder von einer Sorte, mit der das Laufwerk nicht umgehen kann: Versuchen Sie es mit einer anderen DVD.</translation>
    </message>
    <message id="DVDBurnErrorFull">
        <source>The new session would begin shortly before 4 GB of the DVD, or beyond, and none can begin there. Nothing was written: the DVD holds what it held before, but your changes are lost. Nothing more can be put on this DVD. Copy its files to another one and repeat the changes there.</source>
        <translation>Die neue Sitzung würde kurz vor 4 GB der DVD oder dahinter beginnen, und dort kann keine beginnen. Es wurde nichts geschrieben: Die DVD enthält, was sie vorher enthielt, aber Ihre Änderungen sind verloren. Auf diese DVD passt nichts mehr. Kopieren Sie ihre Dateien auf eine andere und wiederholen Sie die Änderungen dort.</translation>
    </message>
    <message id="DVDBurnErrorLong">
        <source>An error was reported while the DVD was being written, so the new session cannot be relied on, and your changes are lost. What was burned earlier may still be readable. Insert the DVD again to see whether it opens. If it does, repeat the changes and burn at a lower speed; if not, use another DVD.</source>
        <translation>Beim Beschreiben der DVD wurde ein Fehler gemeldet. Auf die neue Sitzung ist kein Verlass, und Ihre Änderungen sind verloren. Was früher gebrannt wurde, ist vielleicht noch lesbar. Legen Sie die DVD wieder ein und sehen Sie nach, ob sie sich öffnen lässt. Wenn ja, wiederholen Sie die Änderungen und brennen Sie langsamer; wenn nein, nehmen Sie eine andere DVD.</translation>
    </message>
    <message id="DVDBurnedDoubtfully">
        <source>The disc was burned, but look at it before you rely on it</source>
        <translation>Die Disc ist gebrannt, aber sehen Sie nach, bevor Sie sich auf sie verlassen</translation>
    </message>
    <message id="DVDBurnedDoubtfullyLong">
        <source>Something went wrong while the disc was written, and a file may be missing or damaged on it. Insert the disc again and look at your files before you delete them elsewhere.</source>
        <translation>Beim Schreiben ging etwas schief, und auf der Disc kann eine Datei fehlen oder beschädigt sein. Legen Sie die Disc wieder ein und sehen Sie nach Ihren Dateien, bevor Sie sie anderswo löschen.</translation>
    </message>
    <message id="ReasonNameNotText">
        <source>The name “%@” is not written in UTF-8, so it cannot be put on a disc. Give the item another name.</source>
        <translation>Der Name „%@“ ist nicht in UTF-8 geschrieben und kann deshalb nicht auf eine Disc. Geben Sie dem Objekt einen anderen Namen.</translation>
    </message>
    <message id="ReasonNamesTooAlike">
        <source>“%@” and “%@” differ only behind their first 103 characters, which is as much as a disc keeps. Shorten one of the names.</source>
        <translation>„%@“ und „%@“ unterscheiden sich erst hinter den ersten 103 Zeichen, und mehr behält eine Disc nicht. Kürzen Sie einen der Namen.</translation>
    </message>
    <message id="ReasonFileTooLarge">
        <source>“%@” has 4 GB or more, and a file on a disc has to be smaller. Split it into parts.</source>
        <translation>„%@“ hat 4 GB oder mehr, und eine Datei auf einer Disc muss kleiner sein. Teilen Sie sie auf.</translation>
    </message>
    <message id="ReasonFileNotReadable">
        <source>“%@” could not be read.</source>
        <translation>„%@“ konnte nicht gelesen werden.</translation>
    </message>
    <message id="ReasonFolderHidden">
        <source>Something that was deleted has a name so much like that of the folder around “%@” that both would be hidden. Rename that folder before you delete anything beside it.</source>
        <translation>Etwas Gelöschtes hat einen so ähnlichen Namen wie der Ordner um „%@“, dass beides verborgen würde. Benennen Sie diesen Ordner um, bevor Sie neben ihm etwas löschen.</translation>
    </message>
    <message id="ReasonFolderForFile">
        <source>A new folder has the name that a file on the disc has. Give the folder another name.</source>
        <translation>Ein neuer Ordner heißt wie eine Datei auf der Disc. Geben Sie dem Ordner einen anderen Namen.</translation>
    </message>
    <message id="ReasonLinkLength">
        <source>The disc holds a symbolic link that is too long to be read again, so no session can be added to it.</source>
        <translation>Auf der Disc steht ein symbolischer Link, der zu lang ist, um wieder gelesen zu werden. Deshalb lässt sich keine Sitzung mehr hinzufügen.</translation>
    </message>
    <message id="ReasonDiscFull">
        <source>There is not enough room on the disc for the new session.</source>
        <translation>Auf der Disc ist für die neue Sitzung nicht genug Platz.</translation>
    </message>
    <message id="ReasonSessionLimit">
        <source>The next session would begin shortly before 4 GB of the disc, or beyond 4 GB, and none can begin there. Nothing more can be put on this disc.</source>
        <translation>Die nächste Sitzung würde kurz vor 4 GB oder dahinter beginnen, und dort kann keine beginnen. Auf diese Disc passt nichts mehr.</translation>
    </message>
    <message id="ReasonDiscClosed">
        <source>The disc is closed, or its last session was cut off: no session can be added to it.</source>
        <translation>Die Disc ist abgeschlossen, oder ihre letzte Sitzung brach ab: Es lässt sich keine Sitzung mehr hinzufügen.</translation>
    </message>
    <message id="ReasonFormatUnknown">
        <source>The drive does not tell how the disc can be formatted. Try another drive.</source>
        <translation>Das Laufwerk sagt nicht, wie die Disc formatiert werden kann. Versuchen Sie es mit einem anderen Laufwerk.</translation>
    </message>
    <message id="ReasonTemporaryFolderFull">
        <source>The folder for temporary files is full. Make room there, as much as the new session has.</source>
        <translation>Der Ordner für temporäre Dateien ist voll. Schaffen Sie dort so viel Platz, wie die neue Sitzung braucht.</translation>
    </message>
    <message id="ReasonNoNextSession">
        <source>The drive does not tell where on the disc a new session may begin. Try another drive.</source>
        <translation>Das Laufwerk sagt nicht, wo auf der Disc eine neue Sitzung beginnen darf. Versuchen Sie es mit einem anderen Laufwerk.</translation>
    </message>
    <message id="ReasonNoImageBuilder">
        <source>The program mkisofs, which builds sessions, is missing. It belongs to the package “genisoimage”.</source>
        <translation>Das Programm mkisofs, das Sitzungen zusammenstellt, fehlt. Es gehört zum Paket „genisoimage“.</translation>
    </message>
    <message id="ReasonImageBuilderKilled">
        <source>The program that builds sessions was ended from outside before it was done.</source>
        <translation>Das Programm, das Sitzungen zusammenstellt, wurde von außen beendet, bevor es fertig war.</translation>
    </message>
    <message id="ReasonForeignItem">
        <source>%@ is somebody else's, or not what KelvaneFS needs there.</source>
        <translation>%@ gehört jemand anderem oder ist nicht das, was KelvaneFS dort braucht.</translation>
    </message>
    <message id="ReasonHideListNotWritten">
        <source>The list of deleted files, %@, could not be written.</source>
        <translation>Die Liste der gelöschten Dateien, %@, konnte nicht geschrieben werden.</translation>
    </message>
    <message id="ReasonImageNotMade">
        <source>The image %@ cannot be made.</source>
        <translation>Das Abbild %@ kann nicht angelegt werden.</translation>
    </message>
    <message id="ChangesKeptWhere">
        <source>Your changes are kept in %@.</source>
        <translation>Ihre Änderungen sind in %@ aufgehoben.</translation>
    </message>
    <message id="VolumeUser">
        <source>%@ (process %i) uses %@.</source>
        <translation>%@ (Prozess %i) benutzt %@.</translation>
    </message>
    <message id="ReasonNoNode">
        <source>There is no %@.</source>
        <translation>%@ gibt es nicht.</translation>
    </message>
    <message id="ReasonGroupAtNextLogin">
        <source>%@ can be used by the group %@. You belong to it, but this session does not know yet: log out and in again.</source>
        <translation>%@ darf die Gruppe %@ benutzen. Sie gehören dazu, aber diese Anmeldung weiß noch nichts davon: Melden Sie sich ab und wieder an.</translation>
    </message>
    <message id="ReasonNotInGroup">
        <source>%@ can be used by the group %@ only, and you do not belong to it. As root, run: adduser %@ %@. Then log out and in again.</source>
        <translation>%@ darf nur die Gruppe %@ benutzen, und Sie gehören nicht dazu. Führen Sie als root aus: adduser %@ %@. Melden Sie sich dann ab und wieder an.</translation>
    </message>
    <message id="ReasonNoAccess">
        <source>You may not read and write %@. A rule of udev gives access to it: %@.</source>
        <translation>Sie dürfen %@ nicht lesen und beschreiben. Eine Regel von udev erlaubt es: %@.</translation>
    </message>
    <message id="ReasonDeviceNotOpened">
        <source>The device %@ cannot be opened: %@.</source>
        <translation>Das Gerät %@ lässt sich nicht öffnen: %@.</translation>
    </message>
    <message id="ReasonNoFuseModule">
        <source>The kernel's module for it is not loaded. As root, run: modprobe fuse.</source>
        <translation>Das Modul des Kernels dafür ist nicht geladen. Führen Sie als root aus: modprobe fuse.</translation>
    </message>
    <message id="ReasonContainer">
        <source>Whoever started this container has not let it use the device.</source>
        <translation>Wer diesen Container gestartet hat, hat ihm das Gerät nicht freigegeben.</translation>
    </message>
    <message id="ReasonNoFuseDevice">
        <source>%@ is no device: this system has no user-space file systems.</source>
        <translation>%@ ist kein Gerät: Dieses System hat keine Dateisysteme im Benutzermodus.</translation>
    </message>
    <message id="ReasonRunning">
        <source>KelvaneFS is running already. One disc can be open at a time on a machine.</source>
        <translation>KelvaneFS läuft bereits. Auf einem Rechner kann nur eine Disc auf einmal geöffnet sein.</translation>
    </message>
    <message id="ReasonFileNotOpened">
        <source>The file %@ cannot be opened: %@.</source>
        <translation>Die Datei %@ lässt sich nicht öffnen: %@.</translation>
    </message>
    <message id="ReasonFileNotLocked">
        <source>The file %@ cannot be locked: %@.</source>
        <translation>Die Datei %@ lässt sich nicht sperren: %@.</translation>
    </message>
    <message id="ReasonVolumesNotUsable">
        <source>No volume can be mounted in %@: %@.</source>
        <translation>In %@ kann kein Volume eingehängt werden: %@.</translation>
    </message>
    <message id="ReasonVolumesHelp">
        <source>As root, run: install -d -m 1777 %@.</source>
        <translation>Führen Sie als root aus: install -d -m 1777 %@.</translation>
    </message>
    <message id="TrayKeptShut">
        <source>The disc stays in the drive while it is open</source>
        <translation>Die Disc bleibt im Laufwerk, solange sie geöffnet ist</translation>
    </message>
    <message id="TrayKeptShutLong">
        <source>Taken out now, it would not get your changes, and they would be lost. Close the disc first. It comes out by itself once it has been burned; otherwise press the button of the drive again.</source>
        <translation>Jetzt herausgenommen, bekäme sie Ihre Änderungen nicht, und sie wären verloren. Schließen Sie die Disc zuerst. Nach dem Brennen kommt sie von selbst heraus; sonst drücken Sie dann noch einmal auf die Taste des Laufwerks.</translation>
    </message>
    <message id="attempteraseshort">
        <source>Erase this disc?</source>
        <translation>Diese Disc löschen?</translation>
    </message>
    <message id="attempteraselong">
        <source>Everything on the disc is deleted, in all its sessions. This cannot be undone.</source>
        <translation>Alles auf der Disc wird gelöscht, in allen Sitzungen. Das lässt sich nicht rückgängig machen.</translation>
    </message>
    <message id="EraseError">
        <source>The disc could not be erased</source>
        <translation>Die Disc konnte nicht gelöscht werden</translation>
    </message>
    <message id="EraseErrorLong">
        <source>The disc may hold what it held before, or no longer be readable: eject it and insert it again to see. A rewritable disc that cannot be erased the second time either is worn out or damaged; use another one.</source>
        <translation>Die Disc enthält vielleicht noch alles wie zuvor, vielleicht ist sie nicht mehr lesbar: Werfen Sie sie aus und legen Sie sie wieder ein, um das zu sehen. Eine wiederbeschreibbare Disc, die sich auch beim zweiten Mal nicht löschen lässt, ist abgenutzt oder beschädigt; nehmen Sie eine andere.</translation>
    </message>
    <message id="EraseDriveBusy">
        <source>The drive is busy</source>
        <translation>Das Laufwerk ist beschäftigt</translation>
    </message>
    <message id="EraseDriveBusyLong">
        <source>The disc is being opened, written or erased at the moment, so your request to erase it was not carried out. Wait until that has ended, then try again.</source>
        <translation>Die Disc wird gerade geöffnet, beschrieben oder gelöscht. Ihr Löschauftrag wurde nicht ausgeführt. Warten Sie, bis das beendet ist, und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message id="EraseVolumeBusy">
        <source>The disc is still in use</source>
        <translation>Die Disc wird noch benutzt</translation>
    </message>
    <message id="EraseVolumeBusyLong">
        <source>A program still has files or folders of the disc open, so it has not been erased. Close that program, or leave the disc’s folder in it, then erase the disc again.</source>
        <translation>Ein Programm hat noch Dateien oder Ordner der Disc geöffnet, deshalb wurde sie nicht gelöscht. Beenden Sie das Programm oder verlassen Sie darin den Ordner der Disc, und löschen Sie die Disc dann noch einmal.</translation>
    </message>
    <message id="EraseDiscChanged">
        <source>The disc in the drive is another one by now</source>
        <translation>Im Laufwerk liegt jetzt eine andere Disc</translation>
    </message>
    <message id="EraseDiscChangedLong">
        <source>The drive no longer holds the disc that stood in the list. Nothing has been erased. Look which disc is in the drive, and insert the one that you mean.</source>
        <translation>Die Disc, die in der Liste stand, liegt nicht mehr in dem Laufwerk. Es wurde nichts gelöscht. Sehen Sie nach, welche Disc im Laufwerk liegt, und legen Sie die ein, die Sie meinen.</translation>
    </message>
    <message id="BurnDiscChanged">
        <source>Another disc is in the drive</source>
        <translation>Im Laufwerk liegt eine andere Disc</translation>
    </message>
    <message id="BurnDiscChangedLong">
        <source>The disc in the drive is not the one that you opened and changed, so nothing was written to it. Your changes are kept, and the report says where. Insert the disc that you opened, and copy the changes onto it.</source>
        <translation>Die Disc im Laufwerk ist nicht die, die Sie geöffnet und geändert haben; deshalb wurde nichts darauf geschrieben. Ihre Änderungen werden aufgehoben; der Bericht sagt, wo. Legen Sie die Disc ein, die Sie geöffnet hatten, und kopieren Sie die Änderungen darauf.</translation>
    </message>
    <message id="BurnDiscInUse">
        <source>The disc is still in use</source>
        <translation>Die Disc wird noch benutzt</translation>
    </message>
    <message id="BurnDiscInUseLong">
        <source>A program uses the disc itself, which the desktop has mounted a second time, so nothing was written. Your changes are kept, and the report says where. Close that program, open the disc again and copy the changes onto it.</source>
        <translation>Ein Programm benutzt die Disc selbst, die der Desktop ein zweites Mal eingehängt hat; deshalb wurde nichts geschrieben. Ihre Änderungen werden aufgehoben; der Bericht sagt, wo. Beenden Sie das Programm, öffnen Sie die Disc noch einmal und kopieren Sie die Änderungen darauf.</translation>
    </message>
    <!-- Notifications of the desktop -->
    <message id="NoticeBurned">
        <source>The changes are on the disc</source>
        <translation>Die Änderungen sind auf der Disc</translation>
    </message>
    <message id="NoticeBurnedLong">
        <source>The disc has been written and ejected.</source>
        <translation>Die Disc ist beschrieben und ausgeworfen.</translation>
    </message>
    <message id="NoticeBurnFailed">
        <source>The disc could not be written</source>
        <translation>Die Disc konnte nicht beschrieben werden</translation>
    </message>
    <message id="NoticeBurnFailedLong">
        <source>The window of KelvaneFS tells why.</source>
        <translation>Das Fenster von KelvaneFS nennt den Grund.</translation>
    </message>
    <message id="NoticeErased">
        <source>The disc has been erased</source>
        <translation>Die Disc ist gelöscht</translation>
    </message>
    <message id="NoticeErasedLong">
        <source>It is blank and can be written again.</source>
        <translation>Sie ist leer und kann wieder beschrieben werden.</translation>
    </message>
    <message id="NoticeEraseFailed">
        <source>The disc could not be erased</source>
        <translation>Die Disc konnte nicht gelöscht werden</translation>
    </message>
    <message id="NoticeEraseFailedLong">
        <source>The window of KelvaneFS tells why.</source>
        <translation>Den Grund nennt das Fenster von KelvaneFS.</translation>
    </message>
    <!-- Licence agreement. The resource is the name of the agreement in this language. -->
    <message id="LicenseResource">
        <source>license_en</source>
        <translation>license_de</translation>
    </message>
    <message id="LicenseTitle">
        <source>Licence Agreement</source>
        <translation>Lizenzvereinbarung</translation>
    </message>
    <message id="LicenseAgree">
        <source>&amp;Agree</source>
        <translation>&amp;Zustimmen</translation>
    </message>
    <message id="LicenseDisagree">
        <source>&amp;Disagree</source>
        <translation>&amp;Ablehnen</translation>
    </message>
    <!-- Update check -->
    <message id="updatecheck">
        <source>A newer version of KelvaneFS is available</source>
        <translation>Es gibt eine neuere Version von KelvaneFS</translation>
    </message>
    <message id="updatechecklong">
        <source>You can get it from the KelvaneFS page, which opens in your web browser. This version goes on working, and your discs are not affected.</source>
        <translation>Sie bekommen sie auf der Seite von KelvaneFS, die sich im Webbrowser öffnet. Diese Version funktioniert weiterhin, und Ihre Discs sind nicht betroffen.</translation>
    </message>
    <message id="updatecheckdownload">
        <source>&amp;Go to Download</source>
        <translation>&amp;Zum Download</translation>
    </message>
    <message id="cancelbutton">
        <source>&amp;Not Now</source>
        <translation>&amp;Nicht jetzt</translation>
    </message>
    <!-- Amounts and names -->
    <message id="NumberLocale">
        <source>en_US</source>
        <translation>de_DE</translation>
    </message>
    <message id="Megabytes">
        <source>%@ MB</source>
        <translation>%@ MB</translation>
    </message>
    <message id="Kilobytes">
        <source>%@ KB</source>
        <translation>%@ KB</translation>
    </message>
    <message id="OneFile">
        <source>1 file</source>
        <translation>1 Datei</translation>
    </message>
    <message id="ManyFiles">
        <source>%@ files</source>
        <translation>%@ Dateien</translation>
    </message>
    <message id="OneFolder">
        <source>1 folder</source>
        <translation>1 Ordner</translation>
    </message>
    <message id="ManyFolders">
        <source>%@ folders</source>
        <translation>%@ Ordner</translation>
    </message>
    <message id="QuotedName">
        <source>“%@”</source>
        <translation>„%@“</translation>
    </message>
    <message id="AndMore">
        <source>%@ and %i more</source>
        <translation>%@ und %i weitere</translation>
    </message>
    <message id="AccessibleWarning">
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message id="AccessibleError">
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message id="AccessibleQuestion">
        <source>Question</source>
        <translation>Frage</translation>
    </message>
    <message id="AccessibleInformation">
        <source>Information</source>
        <translation>Hinweis</translation>
    </message>
    <!-- What a burn will change, in the burn confirmation sheet -->
    <message id="Summary">
        <source>What will change</source>
        <translation>Was sich ändert</translation>
    </message>
    <message id="SummaryLooking">
        <source>Finding out what will change…</source>
        <translation>Die Änderungen werden ermittelt …</translation>
    </message>
    <message id="SummaryAdded">
        <source>Added:</source>
        <translation>Neu:</translation>
    </message>
    <message id="SummaryReplaced">
        <source>Replaced:</source>
        <translation>Ersetzt:</translation>
    </message>
    <message id="SummaryRenamed">
        <source>Renamed or moved:</source>
        <translation>Umbenannt oder verschoben:</translation>
    </message>
    <message id="SummaryDeleted">
        <source>Deleted:</source>
        <translation>Gelöscht:</translation>
    </message>
    <message id="SummaryNeeded">
        <source>Space needed:</source>
        <translation>Platzbedarf:</translation>
    </message>
    <message id="SummaryLeft">
        <source>Free afterwards:</source>
        <translation>Danach frei:</translation>
    </message>
    <message id="SummaryAbout">
        <source>about %@</source>
        <translation>etwa %@</translation>
    </message>
    <message id="SummaryProblem">
        <source>The new session cannot be prepared</source>
        <translation>Die neue Sitzung lässt sich nicht vorbereiten</translation>
    </message>
    <message id="SummaryProblemLong">
        <source>%@

If you burn all the same, nothing is written and your changes are lost. Keep the changes in a folder, then open the disc again and copy them onto it without the cause.</source>
        <translation>%@

Wenn Sie trotzdem brennen, wird nichts geschrieben, und Ihre Änderungen gehen verloren. Heben Sie die Änderungen in einem Ordner auf, öffnen Sie die Disc wieder und kopieren Sie sie ohne die Ursache darauf.</translation>
    </message>
    <message id="SummaryDiscProblem">
        <source>No more can be added to this disc</source>
        <translation>Zu dieser Disc lässt sich nichts mehr hinzufügen</translation>
    </message>
    <message id="SummaryDiscProblemLong">
        <source>%@

If you burn all the same, nothing is written and your changes are lost. Keep the changes in a folder, and put them on another disc together with what this one holds.</source>
        <translation>%@

Wenn Sie trotzdem brennen, wird nichts geschrieben, und Ihre Änderungen gehen verloren. Heben Sie die Änderungen in einem Ordner auf und bringen Sie sie zusammen mit dem Inhalt dieser Disc auf eine andere.</translation>
    </message>
    <message id="SummaryTooLarge">
        <source>The changes do not fit on the disc</source>
        <translation>Die Änderungen passen nicht auf die Disc</translation>
    </message>
    <message id="SummaryTooLargeLong">
        <source>They need %@, and %@ are free: that is %@ too much. Keep the changes in a folder, then open the disc again and copy less onto it, or use another disc.</source>
        <translation>Gebraucht werden %@, frei sind %@: %@ zu viel. Heben Sie die Änderungen in einem Ordner auf, öffnen Sie die Disc wieder und kopieren Sie weniger darauf, oder nehmen Sie eine andere Disc.</translation>
    </message>
    <message id="SummaryHidden">
        <source>Something would be missing that you did not delete</source>
        <translation>Es würde etwas fehlen, was Sie nicht gelöscht haben</translation>
    </message>
    <message id="SummaryHiddenLong">
        <source>A name that you deleted, with special characters in it, also stands for %@. In the new session that would be hidden, too. Keep the changes in a folder, open the disc again, and give what you want to keep another name.</source>
        <translation>Ein Name mit Sonderzeichen, den Sie gelöscht haben, steht auch für %@. In der neuen Sitzung wäre das ebenfalls verborgen. Heben Sie die Änderungen in einem Ordner auf, öffnen Sie die Disc wieder und geben Sie dem, was bleiben soll, einen anderen Namen.</translation>
    </message>
    <message id="SummaryShownStill">
        <source>Something that you deleted would still be listed</source>
        <translation>Etwas, das Sie gelöscht haben, wäre noch zu sehen</translation>
    </message>
    <message id="SummaryShownStillLong">
        <source>The program that writes discs cannot hide these names, which have a backslash or a line break in them: %@. In the new session each of them is left as an empty file. You can burn all the same.</source>
        <translation>Das Programm, das Discs schreibt, kann diese Namen nicht verbergen, weil ein umgekehrter Schrägstrich oder ein Zeilenumbruch darin steht: %@. In der neuen Sitzung bleibt von jedem eine leere Datei. Brennen können Sie trotzdem.</translation>
    </message>
    <message id="BurnConfirmationKeep">
        <source>&amp;Keep in Folder</source>
        <translation>In &amp;Ordner aufheben</translation>
    </message>
    <message id="BurnConfirmationKeepLong">
        <source>Burn nothing, and keep new and changed files in a folder on this computer</source>
        <translation>Nichts brennen und neue und geänderte Dateien in einem Ordner auf diesem Rechner aufheben</translation>
    </message>
    <message id="ChangesKept">
        <source>Your changes are kept on this computer</source>
        <translation>Ihre Änderungen sind auf diesem Rechner aufgehoben</translation>
    </message>
    <message id="ChangesKeptLong">
        <source>Nothing was written: the disc holds what it held before, and what you deleted is still on it. New and changed files lie in the folder that the report names. It is one for temporary files, so move them elsewhere before the computer is switched off.</source>
        <translation>Es wurde nichts geschrieben: Die Disc enthält, was sie vorher enthielt, auch was Sie gelöscht haben. Neue und geänderte Dateien liegen in dem Ordner, den der Bericht nennt. Er ist nur für vorübergehend Gebrauchtes da; bringen Sie Ihre Dateien an einen anderen Ort, bevor der Rechner ausgeschaltet wird.</translation>
    </message>
    <!-- Copying files onto the open disc -->
    <message id="AccessibleMountedItemLong">
        <source>Drop files or folders here to copy them onto the disc, or paste them with Ctrl+V.</source>
        <translation>Ziehen Sie Dateien oder Ordner hierher, um sie auf die Disc zu kopieren, oder fügen Sie sie mit Strg+V ein.</translation>
    </message>
    <message id="Copying">
        <source>Copying onto the disc</source>
        <translation>Kopieren auf die Disc</translation>
    </message>
    <message id="CopyLooking">
        <source>Finding out what is to be copied…</source>
        <translation>Es wird ermittelt, was zu kopieren ist …</translation>
    </message>
    <message id="CopyName">
        <source>Copying “%@”</source>
        <translation>„%@“ wird kopiert</translation>
    </message>
    <message id="CopyAmount">
        <source>%@ of %@ – %@ of %@</source>
        <translation>%@ von %@ – %@ von %@</translation>
    </message>
    <message id="UnderAMinuteLeft">
        <source>Less than a minute left</source>
        <translation>Noch weniger als eine Minute</translation>
    </message>
    <message id="MinutesLeft">
        <source>About %i minutes left</source>
        <translation>Noch etwa %i Minuten</translation>
    </message>
    <message id="CopyCancelling">
        <source>Cancelling…</source>
        <translation>Wird abgebrochen …</translation>
    </message>
    <message id="AccessibleCopyProgress">
        <source>Progress of the copying</source>
        <translation>Fortschritt des Kopierens</translation>
    </message>
    <message id="AccessibleCopyAmount">
        <source>How much is copied</source>
        <translation>Wie viel kopiert ist</translation>
    </message>
    <message id="AccessibleRemainingTime">
        <source>Remaining time</source>
        <translation>Verbleibende Zeit</translation>
    </message>
    <message id="CopyTaken">
        <source>“%@” is on the disc already</source>
        <translation>„%@“ gibt es auf der Disc schon</translation>
    </message>
    <message id="CopyTakenLong">
        <source>If you replace it, the file on the disc gives way to the one that you are copying. If you keep both, that one gets a number after its name.</source>
        <translation>Wenn Sie sie ersetzen, weicht die Datei auf der Disc der, die Sie kopieren. Wenn Sie beide behalten, bekommt diese eine Nummer hinter ihren Namen.</translation>
    </message>
    <message id="CopyTakenByFolder">
        <source>One of the two is a folder and the other is not, so neither can take the other’s place. If you keep both, the one that you are copying gets a number after its name.</source>
        <translation>Eines von beiden ist ein Ordner, das andere nicht; keines kann den Platz des anderen einnehmen. Wenn Sie beide behalten, bekommt das, was Sie kopieren, eine Nummer hinter seinen Namen.</translation>
    </message>
    <message id="CopyForAll">
        <source>&amp;Do the same for all names that are taken</source>
        <translation>Bei allen &amp;vorhandenen Namen so verfahren</translation>
    </message>
    <message id="CopyReplace">
        <source>&amp;Replace</source>
        <translation>&amp;Ersetzen</translation>
    </message>
    <message id="CopyKeepBoth">
        <source>&amp;Keep Both</source>
        <translation>&amp;Beide behalten</translation>
    </message>
    <message id="CopySkip">
        <source>&amp;Skip</source>
        <translation>Über&amp;springen</translation>
    </message>
    <message id="CopyNoRoom">
        <source>There is not enough room for these files</source>
        <translation>Für diese Dateien ist nicht genug Platz</translation>
    </message>
    <message id="CopyNoRoomLong">
        <source>Nothing has been copied. The files have to find room on the disc, and until it is burned in this computer’s folder for temporary files. Copy less, or make room.</source>
        <translation>Es wurde nichts kopiert. Die Dateien müssen auf der Disc Platz finden und bis zum Brennen auch im Ordner für temporäre Dateien auf diesem Rechner. Kopieren Sie weniger oder schaffen Sie Platz.</translation>
    </message>
    <message id="CopyRoom">
        <source>%@ are needed, %@ are free.</source>
        <translation>Nötig sind %@, frei sind %@.</translation>
    </message>
    <message id="CopyFailures">
        <source>Not everything could be copied</source>
        <translation>Nicht alles konnte kopiert werden</translation>
    </message>
    <message id="CopyFailuresLong">
        <source>All other files and folders are on the volume. What is missing is named below; the system log has the whole list.</source>
        <translation>Alle anderen Dateien und Ordner sind auf dem Volume. Was fehlt, steht unten; das Systemprotokoll enthält die ganze Liste.</translation>
    </message>
    <message id="CopyFailure">
        <source>“%@”: %@</source>
        <translation>„%@“: %@</translation>
    </message>
    <message id="CopyMoreFailures">
        <source>and %i more</source>
        <translation>und %i weitere</translation>
    </message>
    <message id="CopyNotReadable">
        <source>it cannot be read</source>
        <translation>nicht lesbar</translation>
    </message>
    <message id="CopyNoRoomLeft">
        <source>no room is left</source>
        <translation>kein Platz mehr</translation>
    </message>
    <message id="CopyTooLarge">
        <source>it has 4 GB or more, which no file on a disc can have</source>
        <translation>4 GB oder mehr; so groß darf eine Datei auf einer Disc nicht sein</translation>
    </message>
    <message id="CopyNotAFile">
        <source>it is neither a file nor a folder</source>
        <translation>weder Datei noch Ordner</translation>
    </message>
    <message id="CopyHoldsTheVolume">
        <source>the disc itself is in this folder</source>
        <translation>die Disc selbst liegt in diesem Ordner</translation>
    </message>
    <message id="CopyAlreadyThere">
        <source>it is on the disc already, in the same place</source>
        <translation>liegt schon an dieser Stelle auf der Disc</translation>
    </message>
    <message id="CopyRunning">
        <source>Files are still being copied onto the disc</source>
        <translation>Es werden noch Dateien auf die Disc kopiert</translation>
    </message>
    <message id="CopyRunningLong">
        <source>The disc stays open until they are copied. Wait for that, or cancel the copying, and close the disc then.</source>
        <translation>Die Disc bleibt geöffnet, bis sie kopiert sind. Warten Sie das ab oder brechen Sie das Kopieren ab, und schließen Sie die Disc dann.</translation>
    </message>
</context>
</TS>
