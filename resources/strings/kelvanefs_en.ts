<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-2.0-or-later -->
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name></name>
    <!-- Buttons of sheets -->
    <message id="OK">
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message id="Cancel">
        <source>&amp;Cancel</source>
        <translation>&amp;Cancel</translation>
    </message>
    <message id="Install">
        <source>&amp;Install</source>
        <translation>&amp;Install</translation>
    </message>
    <message id="Quit">
        <source>&amp;Quit</source>
        <translation>&amp;Quit</translation>
    </message>
    <message id="Erase">
        <source>&amp;Erase</source>
        <translation>&amp;Erase</translation>
    </message>
    <!-- The window -->
    <message id="buttonopen">
        <source>&amp;Open Disc</source>
        <translation>&amp;Open Disc</translation>
    </message>
    <message id="buttonclose">
        <source>&amp;Close Disc</source>
        <translation>&amp;Close Disc</translation>
    </message>
    <message id="ShowDisk">
        <source>&amp;Show Files</source>
        <translation>&amp;Show Files</translation>
    </message>
    <message id="EraseDisc">
        <source>&amp;Erase Disc…</source>
        <translation>&amp;Erase Disc…</translation>
    </message>
    <message id="InsertDisc">
        <source>&amp;Insert Disc</source>
        <translation>&amp;Insert Disc</translation>
    </message>
    <message id="InsertDiscNamed">
        <source>Insert “%@”</source>
        <translation>Insert “%@”</translation>
    </message>
    <!-- The window's menu and the preferences panel -->
    <message id="WindowMenu">
        <source>Menu</source>
        <translation>Menu</translation>
    </message>
    <message id="MenuPreferences">
        <source>&amp;Preferences…</source>
        <translation>&amp;Preferences…</translation>
    </message>
    <message id="MenuAddFiles">
        <source>Add &amp;Files…</source>
        <translation>Add &amp;Files…</translation>
    </message>
    <message id="MenuAddFolder">
        <source>Add F&amp;older…</source>
        <translation>Add F&amp;older…</translation>
    </message>
    <message id="ChooseFiles">
        <source>Choose files for the disc</source>
        <translation>Choose files for the disc</translation>
    </message>
    <message id="ChooseFolder">
        <source>Choose a folder for the disc</source>
        <translation>Choose a folder for the disc</translation>
    </message>
    <message id="ChooseAdd">
        <source>Add</source>
        <translation>Add</translation>
    </message>
    <message id="MenuLicense">
        <source>&amp;Licence Agreement</source>
        <translation>&amp;Licence Agreement</translation>
    </message>
    <message id="MenuQuit">
        <source>&amp;Quit</source>
        <translation>&amp;Quit</translation>
    </message>
    <message id="PreferencesTitle">
        <source>Preferences</source>
        <translation>Preferences</translation>
    </message>
    <message id="PreferenceAutohide">
        <source>Show the files as soon as a disc is &amp;open</source>
        <translation>Show the files as soon as a disc is &amp;open</translation>
    </message>
    <message id="PreferenceAutohideLong">
        <source>The file manager shows the disc’s files, and this window makes way for it.</source>
        <translation>The file manager shows the disc’s files, and this window makes way for it.</translation>
    </message>
    <message id="PreferenceNoAppleDouble">
        <source>Do not &amp;burn files whose names begin with “._”</source>
        <translation>Do not &amp;burn files whose names begin with “._”</translation>
    </message>
    <message id="PreferenceNoAppleDoubleLong">
        <source>Some systems put such a file beside another one, for what that file cannot hold itself. Without it the other file stays whole, but its extended attributes are lost.</source>
        <translation>Some systems put such a file beside another one, for what that file cannot hold itself. Without it the other file stays whole, but its extended attributes are lost.</translation>
    </message>
    <message id="PreferenceUpdateCheck">
        <source>Look for a &amp;newer version at each start</source>
        <translation>Look for a &amp;newer version at each start</translation>
    </message>
    <message id="PreferenceUpdateCheckLong">
        <source>Only the number of the newest version is asked for. Nothing about you or your discs is sent.</source>
        <translation>Only the number of the newest version is asked for. Nothing about you or your discs is sent.</translation>
    </message>
    <message id="PreferenceNoUpdateCheckLong">
        <source>This build of KelvaneFS never looks for newer versions. Updates come the way in which it was installed.</source>
        <translation>This build of KelvaneFS never looks for newer versions. Updates come the way in which it was installed.</translation>
    </message>
    <message id="PreferencesNotStored">
        <source>This change could not be saved. Check that you may write to your settings folder and that the disk is not full.</source>
        <translation>This change could not be saved. Check that you may write to your settings folder and that the disk is not full.</translation>
    </message>
    <message id="PreferencesVersion">
        <source>KelvaneFS %@</source>
        <translation>KelvaneFS %@</translation>
    </message>
    <message id="PreferencesLicense">
        <source>&amp;Licence Agreement</source>
        <translation>&amp;Licence Agreement</translation>
    </message>
    <message id="PreferencesClose">
        <source>&amp;Close</source>
        <translation>&amp;Close</translation>
    </message>
    <message id="insertdisk">
        <source>Insert a CD or DVD that can still be written to.</source>
        <translation>Insert a CD or DVD that can still be written to.</translation>
    </message>
    <message id="loadingdisk">
        <source>Loading disc…</source>
        <translation>Loading disc…</translation>
    </message>
    <message id="headerDisksAvail">
        <source>Available discs</source>
        <translation>Available discs</translation>
    </message>
    <message id="headerDisksMounting">
        <source>Opening the disc…</source>
        <translation>Opening the disc…</translation>
    </message>
    <message id="headerDisksRemounted">
        <source>The disc is open for changes</source>
        <translation>The disc is open for changes</translation>
    </message>
    <message id="burningdisk">
        <source>Writing to the disc</source>
        <translation>Writing to the disc</translation>
    </message>
    <message id="diskfull">
        <source>Disc is full</source>
        <translation>Disc is full</translation>
    </message>
    <message id="unsupporteddiskformat">
        <source>Format not supported</source>
        <translation>Format not supported</translation>
    </message>
    <message id="unsupporteddisktype">
        <source>Disc type not supported</source>
        <translation>Disc type not supported</translation>
    </message>
    <message id="viewSizeOfDisk">
        <source>%i MB free</source>
        <translation>%i MB free</translation>
    </message>
    <message id="viewSizeNotAvail">
        <source>Free space unknown</source>
        <translation>Free space unknown</translation>
    </message>
    <!-- What the window tells those who cannot see it -->
    <message id="AccessibleHeader">
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message id="AccessibleMessage">
        <source>Message</source>
        <translation>Message</translation>
    </message>
    <message id="AccessibleDiskList">
        <source>Discs</source>
        <translation>Discs</translation>
    </message>
    <message id="AccessibleDiskListLong">
        <source>The discs in your drives. Press Enter to open the selected one.</source>
        <translation>The discs in your drives. Press Enter to open the selected one.</translation>
    </message>
    <message id="AccessibleDiskIcon">
        <source>Disc</source>
        <translation>Disc</translation>
    </message>
    <message id="AccessibleMountedItem">
        <source>Open disc</source>
        <translation>Open disc</translation>
    </message>
    <message id="AccessibleVolumeName">
        <source>Name of the disc</source>
        <translation>Name of the disc</translation>
    </message>
    <message id="AccessibleDeviceName">
        <source>Kind of disc and drive</source>
        <translation>Kind of disc and drive</translation>
    </message>
    <message id="AccessibleSizeInformation">
        <source>Free space on the disc</source>
        <translation>Free space on the disc</translation>
    </message>
    <message id="AccessibleBurnView">
        <source>Burning</source>
        <translation>Burning</translation>
    </message>
    <message id="AccessibleBurnMessage">
        <source>What is being done</source>
        <translation>What is being done</translation>
    </message>
    <message id="AccessibleBurnProgress">
        <source>Progress of the burn</source>
        <translation>Progress of the burn</translation>
    </message>
    <message id="AccessibleEraseMessage">
        <source>What is being done</source>
        <translation>What is being done</translation>
    </message>
    <message id="AccessibleEraseProgress">
        <source>Progress of the erasing</source>
        <translation>Progress of the erasing</translation>
    </message>
    <message id="ShowDiskLong">
        <source>Show the files of the open disc in the file manager</source>
        <translation>Show the files of the open disc in the file manager</translation>
    </message>
    <message id="EraseDiscLong">
        <source>Delete everything on the selected disc, if it is rewritable</source>
        <translation>Delete everything on the selected disc, if it is rewritable</translation>
    </message>
    <message id="InsertDiscLong">
        <source>Put the disc back into its emulated drive</source>
        <translation>Put the disc back into its emulated drive</translation>
    </message>
    <!-- The burn view -->
    <message id="burnpreparing">
        <source>Preparing to burn…</source>
        <translation>Preparing to burn…</translation>
    </message>
    <message id="preparingdata">
        <source>Preparing the new session…</source>
        <translation>Preparing the new session…</translation>
    </message>
    <message id="preparingemptydisk">
        <source>Preparing the blank DVD-RW…</source>
        <translation>Preparing the blank DVD-RW…</translation>
    </message>
    <message id="burningchangescd">
        <source>Writing your changes to the CD…</source>
        <translation>Writing your changes to the CD…</translation>
    </message>
    <message id="burningchangesdvd">
        <source>Writing your changes to the DVD…</source>
        <translation>Writing your changes to the DVD…</translation>
    </message>
    <message id="erasingdisk">
        <source>Erasing the disc…</source>
        <translation>Erasing the disc…</translation>
    </message>
    <message id="BurnPercent">
        <source>%i%</source>
        <translation>%i%</translation>
    </message>
    <!-- The burn confirmation sheet -->
    <message id="BurnConfirmation">
        <source>Burn your changes to the disc?</source>
        <translation>Burn your changes to the disc?</translation>
    </message>
    <message id="BurnConfirmationLong">
        <source>The changes are added to the disc as a new session; sessions burned before stay as they are. If you discard the changes, the disc keeps what it holds now and your changes are lost.</source>
        <translation>The changes are added to the disc as a new session; sessions burned before stay as they are. If you discard the changes, the disc keeps what it holds now and your changes are lost.</translation>
    </message>
    <message id="BurnConfirmationName">
        <source>Disc &amp;name:</source>
        <translation>Disc &amp;name:</translation>
    </message>
    <message id="BurnConfirmationSpeed">
        <source>&amp;Speed:</source>
        <translation>&amp;Speed:</translation>
    </message>
    <message id="BurnConfirmationBurn">
        <source>&amp;Burn</source>
        <translation>&amp;Burn</translation>
    </message>
    <message id="BurnConfirmationDiscard">
        <source>&amp;Discard Changes</source>
        <translation>&amp;Discard Changes</translation>
    </message>
    <message id="SpeedMaximum">
        <source>As fast as the drive can</source>
        <translation>As fast as the drive can</translation>
    </message>
    <message id="SpeedMultiple">
        <source>%i×</source>
        <translation>%i×</translation>
    </message>
    <message id="DiscardChanges">
        <source>Discard your changes?</source>
        <translation>Discard your changes?</translation>
    </message>
    <message id="DiscardChangesLong">
        <source>Everything that you have added, changed or deleted since you opened the disc is lost. The disc itself is not touched.</source>
        <translation>Everything that you have added, changed or deleted since you opened the disc is lost. The disc itself is not touched.</translation>
    </message>
    <message id="DiscardChangesKeep">
        <source>&amp;Keep Changes</source>
        <translation>&amp;Keep Changes</translation>
    </message>
    <!-- Alerts -->
    <message id="AlertDetail">
        <source>What was reported: %@</source>
        <translation>What was reported: %@</translation>
    </message>
    <message id="InstallationIncomplete">
        <source>KelvaneFS cannot use FUSE on this computer</source>
        <translation>KelvaneFS cannot use FUSE on this computer</translation>
    </message>
    <message id="InstallationIncompleteLong">
        <source>Discs are opened as writable volumes by means of FUSE, and it is not installed here or you may not use it. No disc has been touched. The report says what is missing. Where it is the package “fuse3”, choose Install to have it installed, then start KelvaneFS again.</source>
        <translation>Discs are opened as writable volumes by means of FUSE, and it is not installed here or you may not use it. No disc has been touched. The report says what is missing. Where it is the package “fuse3”, choose Install to have it installed, then start KelvaneFS again.</translation>
    </message>
    <message id="Unmountfailed">
        <source>The disc could not be opened</source>
        <translation>The disc could not be opened</translation>
    </message>
    <message id="Unmountfailedlong">
        <source>KelvaneFS could not find the disc’s own volume or could not take it over. Nothing on the disc has changed. Close the windows and programs that use the disc and open it again. If that does not help, eject the disc and insert it once more.</source>
        <translation>KelvaneFS could not find the disc’s own volume or could not take it over. Nothing on the disc has changed. Close the windows and programs that use the disc and open it again. If that does not help, eject the disc and insert it once more.</translation>
    </message>
    <message id="VolumeBusy">
        <source>The disc is still in use</source>
        <translation>The disc is still in use</translation>
    </message>
    <message id="VolumeBusyLong">
        <source>A program still has files or folders of the disc open, so the disc cannot be closed yet. Your changes are safe and the disc stays open. Close that program, or leave the disc’s folder in it, then close the disc again.</source>
        <translation>A program still has files or folders of the disc open, so the disc cannot be closed yet. Your changes are safe and the disc stays open. Close that program, or leave the disc’s folder in it, then close the disc again.</translation>
    </message>
    <message id="VolumeNotUnmounted">
        <source>The disc could not be closed</source>
        <translation>The disc could not be closed</translation>
    </message>
    <message id="VolumeNotUnmountedLong">
        <source>The system refused to unmount its volume, although no program uses it. Your changes are safe and the disc stays open. Make sure that the program fusermount3 (package “fuse3”) is installed and may be run, then close the disc again.</source>
        <translation>The system refused to unmount its volume, although no program uses it. Your changes are safe and the disc stays open. Make sure that the program fusermount3 (package “fuse3”) is installed and may be run, then close the disc again.</translation>
    </message>
    <message id="LogoutDiscOpen">
        <source>A disc is open, and its changes are not burned yet.</source>
        <translation>A disc is open, and its changes are not burned yet.</translation>
    </message>
    <message id="LogoutDuringBurn">
        <source>You are still logged in: a disc is being burned</source>
        <translation>You are still logged in: a disc is being burned</translation>
    </message>
    <message id="LogoutDuringBurnLong">
        <source>Logging out now could spoil the disc, so it was stopped. Log out again when the burn is complete.</source>
        <translation>Logging out now could spoil the disc, so it was stopped. Log out again when the burn is complete.</translation>
    </message>
    <message id="MountFailed">
        <source>The disc could not be opened for changes</source>
        <translation>The disc could not be opened for changes</translation>
    </message>
    <message id="MountFailedLong">
        <source>The writable volume could not be mounted. Nothing on the disc has changed. Check that you may use FUSE and that no other volume lies at the place where KelvaneFS shows its discs, then take the disc out and insert it again.</source>
        <translation>The writable volume could not be mounted. Nothing on the disc has changed. Check that you may use FUSE and that no other volume lies at the place where KelvaneFS shows its discs, then take the disc out and insert it again.</translation>
    </message>
    <message id="DriveClosed">
        <source>You may not write with this drive</source>
        <translation>You may not write with this drive</translation>
    </message>
    <message id="DriveClosedLong">
        <source>Discs in it are missing from the list, or can be opened but not burned. The report says what would give you access.</source>
        <translation>Discs in it are missing from the list, or can be opened but not burned. The report says what would give you access.</translation>
    </message>
    <message id="CreateTrackAbortedWithError">
        <source>The new session could not be prepared</source>
        <translation>The new session could not be prepared</translation>
    </message>
    <message id="CreateTrackAbortedWithErrorLong">
        <source>Nothing was written: the disc holds what it held before, but your changes are lost. Usual causes are a full temporary folder, files that cannot be read, file names that are too much alike or not valid text, and files of 4 GB or more. Open the disc again and repeat the changes without the cause.</source>
        <translation>Nothing was written: the disc holds what it held before, but your changes are lost. Usual causes are a full temporary folder, files that cannot be read, file names that are too much alike or not valid text, and files of 4 GB or more. Open the disc again and repeat the changes without the cause.</translation>
    </message>
    <message id="SessionNotPreparedLong">
        <source>Nothing was written: the disc holds what it held before. Something in the folder for temporary files is in the way. As far as your changes are still there, they are kept, and the report says where. Remove what is in the way, open the disc again and copy the changes onto it.</source>
        <translation>Nothing was written: the disc holds what it held before. Something in the folder for temporary files is in the way. As far as your changes are still there, they are kept, and the report says where. Remove what is in the way, open the disc again and copy the changes onto it.</translation>
    </message>
    <message id="CDBurnError">
        <source>The CD could not be burned completely</source>
        <translation>The CD could not be burned completely</translation>
    </message>
    <message id="CDBurnErrorLong">
        <source>The drive reported an error while it was writing, so the new session cannot be relied on, and your changes are lost. What was burned earlier is still on the CD. Insert it again to see whether it opens. If it does, repeat the changes and burn at a lower speed; if not, copy its files to a new CD.</source>
        <translation>The drive reported an error while it was writing, so the new session cannot be relied on, and your changes are lost. What was burned earlier is still on the CD. Insert it again to see whether it opens. If it does, repeat the changes and burn at a lower speed; if not, copy its files to a new CD.</translation>
    </message>
    <message id="DVDDeviceNotResponding">
        <source>The drive does not respond</source>
        <translation>The drive does not respond</translation>
    </message>
    <message id="DVDDeviceNotRespondingLong">
        <source>The blank DVD-RW was prepared, but the drive did not become ready for it within 30 seconds. Your changes have not been written and are lost. The DVD is ejected; insert it again and repeat the changes. If this happens again, try another DVD.</source>
        <translation>The blank DVD-RW was prepared, but the drive did not become ready for it within 30 seconds. Your changes have not been written and are lost. The DVD is ejected; insert it again and repeat the changes. If this happens again, try another DVD.</translation>
    </message>
    <message id="DVDBurnError">
        <source>The DVD could not be burned</source>
        <translation>The DVD could not be burned</translation>
    </message>
    <message id="DVDBurnErrorAllocLong">
        <source>The drive’s answer about formatting this DVD makes no sense, so the burn was given up, and your changes are lost. What was burned earlier is still on the DVD. The disc may be damaged or of a make that the drive cannot handle: try another DVD.</source>
        <translation>The drive’s answer about formatting this DVD makes no sense, so the burn was given up, and your changes are lost. What was burned earlier is still on the DVD. The disc may be damaged or of a make that the drive cannot handle: try another DVD.</translation>
    </message>
    <message id="DVDBurnErrorFull">
        <source>The new session would begin shortly before 4 GB of the DVD, or beyond, and none can begin there. Nothing was written: the DVD holds what it held before, but your changes are lost. Nothing more can be put on this DVD. Copy its files to another one and repeat the changes there.</source>
        <translation>The new session would begin shortly before 4 GB of the DVD, or beyond, and none can begin there. Nothing was written: the DVD holds what it held before, but your changes are lost. Nothing more can be put on this DVD. Copy its files to another one and repeat the changes there.</translation>
    </message>
    <message id="DVDBurnErrorLong">
        <source>An error was reported while the DVD was being written, so the new session cannot be relied on, and your changes are lost. What was burned earlier may still be readable. Insert the DVD again to see whether it opens. If it does, repeat the changes and burn at a lower speed; if not, use another DVD.</source>
        <translation>An error was reported while the DVD was being written, so the new session cannot be relied on, and your changes are lost. What was burned earlier may still be readable. Insert the DVD again to see whether it opens. If it does, repeat the changes and burn at a lower speed; if not, use another DVD.</translation>
    </message>
    <message id="DVDBurnedDoubtfully">
        <source>The disc was burned, but look at it before you rely on it</source>
        <translation>The disc was burned, but look at it before you rely on it</translation>
    </message>
    <message id="DVDBurnedDoubtfullyLong">
        <source>Something went wrong while the disc was written, and a file may be missing or damaged on it. Insert the disc again and look at your files before you delete them elsewhere.</source>
        <translation>Something went wrong while the disc was written, and a file may be missing or damaged on it. Insert the disc again and look at your files before you delete them elsewhere.</translation>
    </message>
    <message id="ReasonNameNotText">
        <source>The name “%@” is not written in UTF-8, so it cannot be put on a disc. Give the item another name.</source>
        <translation>The name “%@” is not written in UTF-8, so it cannot be put on a disc. Give the item another name.</translation>
    </message>
    <message id="ReasonNamesTooAlike">
        <source>“%@” and “%@” differ only behind their first 103 characters, which is as much as a disc keeps. Shorten one of the names.</source>
        <translation>“%@” and “%@” differ only behind their first 103 characters, which is as much as a disc keeps. Shorten one of the names.</translation>
    </message>
    <message id="ReasonFileTooLarge">
        <source>“%@” has 4 GB or more, and a file on a disc has to be smaller. Split it into parts.</source>
        <translation>“%@” has 4 GB or more, and a file on a disc has to be smaller. Split it into parts.</translation>
    </message>
    <message id="ReasonFileNotReadable">
        <source>“%@” could not be read.</source>
        <translation>“%@” could not be read.</translation>
    </message>
    <message id="ReasonFolderHidden">
        <source>Something that was deleted has a name so much like that of the folder around “%@” that both would be hidden. Rename that folder before you delete anything beside it.</source>
        <translation>Something that was deleted has a name so much like that of the folder around “%@” that both would be hidden. Rename that folder before you delete anything beside it.</translation>
    </message>
    <message id="ReasonFolderForFile">
        <source>A new folder has the name that a file on the disc has. Give the folder another name.</source>
        <translation>A new folder has the name that a file on the disc has. Give the folder another name.</translation>
    </message>
    <message id="ReasonLinkLength">
        <source>The disc holds a symbolic link that is too long to be read again, so no session can be added to it.</source>
        <translation>The disc holds a symbolic link that is too long to be read again, so no session can be added to it.</translation>
    </message>
    <message id="ReasonDiscFull">
        <source>There is not enough room on the disc for the new session.</source>
        <translation>There is not enough room on the disc for the new session.</translation>
    </message>
    <message id="ReasonSessionLimit">
        <source>The next session would begin shortly before 4 GB of the disc, or beyond 4 GB, and none can begin there. Nothing more can be put on this disc.</source>
        <translation>The next session would begin shortly before 4 GB of the disc, or beyond 4 GB, and none can begin there. Nothing more can be put on this disc.</translation>
    </message>
    <message id="ReasonDiscClosed">
        <source>The disc is closed, or its last session was cut off: no session can be added to it.</source>
        <translation>The disc is closed, or its last session was cut off: no session can be added to it.</translation>
    </message>
    <message id="ReasonFormatUnknown">
        <source>The drive does not tell how the disc can be formatted. Try another drive.</source>
        <translation>The drive does not tell how the disc can be formatted. Try another drive.</translation>
    </message>
    <message id="ReasonTemporaryFolderFull">
        <source>The folder for temporary files is full. Make room there, as much as the new session has.</source>
        <translation>The folder for temporary files is full. Make room there, as much as the new session has.</translation>
    </message>
    <message id="ReasonNoNextSession">
        <source>The drive does not tell where on the disc a new session may begin. Try another drive.</source>
        <translation>The drive does not tell where on the disc a new session may begin. Try another drive.</translation>
    </message>
    <message id="ReasonNoImageBuilder">
        <source>The program mkisofs, which builds sessions, is missing. It belongs to the package “genisoimage”.</source>
        <translation>The program mkisofs, which builds sessions, is missing. It belongs to the package “genisoimage”.</translation>
    </message>
    <message id="ReasonImageBuilderKilled">
        <source>The program that builds sessions was ended from outside before it was done.</source>
        <translation>The program that builds sessions was ended from outside before it was done.</translation>
    </message>
    <message id="ReasonForeignItem">
        <source>%@ is somebody else's, or not what KelvaneFS needs there.</source>
        <translation>%@ is somebody else's, or not what KelvaneFS needs there.</translation>
    </message>
    <message id="ReasonHideListNotWritten">
        <source>The list of deleted files, %@, could not be written.</source>
        <translation>The list of deleted files, %@, could not be written.</translation>
    </message>
    <message id="ReasonImageNotMade">
        <source>The image %@ cannot be made.</source>
        <translation>The image %@ cannot be made.</translation>
    </message>
    <message id="ChangesKeptWhere">
        <source>Your changes are kept in %@.</source>
        <translation>Your changes are kept in %@.</translation>
    </message>
    <message id="VolumeUser">
        <source>%@ (process %i) uses %@.</source>
        <translation>%@ (process %i) uses %@.</translation>
    </message>
    <message id="ReasonNoNode">
        <source>There is no %@.</source>
        <translation>There is no %@.</translation>
    </message>
    <message id="ReasonGroupAtNextLogin">
        <source>%@ can be used by the group %@. You belong to it, but this session does not know yet: log out and in again.</source>
        <translation>%@ can be used by the group %@. You belong to it, but this session does not know yet: log out and in again.</translation>
    </message>
    <message id="ReasonNotInGroup">
        <source>%@ can be used by the group %@ only, and you do not belong to it. As root, run: adduser %@ %@. Then log out and in again.</source>
        <translation>%@ can be used by the group %@ only, and you do not belong to it. As root, run: adduser %@ %@. Then log out and in again.</translation>
    </message>
    <message id="ReasonNoAccess">
        <source>You may not read and write %@. A rule of udev gives access to it: %@.</source>
        <translation>You may not read and write %@. A rule of udev gives access to it: %@.</translation>
    </message>
    <message id="ReasonDeviceNotOpened">
        <source>The device %@ cannot be opened: %@.</source>
        <translation>The device %@ cannot be opened: %@.</translation>
    </message>
    <message id="ReasonNoFuseModule">
        <source>The kernel's module for it is not loaded. As root, run: modprobe fuse.</source>
        <translation>The kernel's module for it is not loaded. As root, run: modprobe fuse.</translation>
    </message>
    <message id="ReasonContainer">
        <source>Whoever started this container has not let it use the device.</source>
        <translation>Whoever started this container has not let it use the device.</translation>
    </message>
    <message id="ReasonNoFuseDevice">
        <source>%@ is no device: this system has no user-space file systems.</source>
        <translation>%@ is no device: this system has no user-space file systems.</translation>
    </message>
    <message id="ReasonRunning">
        <source>KelvaneFS is running already. One disc can be open at a time on a machine.</source>
        <translation>KelvaneFS is running already. One disc can be open at a time on a machine.</translation>
    </message>
    <message id="ReasonFileNotOpened">
        <source>The file %@ cannot be opened: %@.</source>
        <translation>The file %@ cannot be opened: %@.</translation>
    </message>
    <message id="ReasonFileNotLocked">
        <source>The file %@ cannot be locked: %@.</source>
        <translation>The file %@ cannot be locked: %@.</translation>
    </message>
    <message id="ReasonVolumesNotUsable">
        <source>No volume can be mounted in %@: %@.</source>
        <translation>No volume can be mounted in %@: %@.</translation>
    </message>
    <message id="ReasonVolumesHelp">
        <source>As root, run: install -d -m 1777 %@.</source>
        <translation>As root, run: install -d -m 1777 %@.</translation>
    </message>
    <message id="TrayKeptShut">
        <source>The disc stays in the drive while it is open</source>
        <translation>The disc stays in the drive while it is open</translation>
    </message>
    <message id="TrayKeptShutLong">
        <source>Taken out now, it would not get your changes, and they would be lost. Close the disc first. It comes out by itself once it has been burned; otherwise press the button of the drive again.</source>
        <translation>Taken out now, it would not get your changes, and they would be lost. Close the disc first. It comes out by itself once it has been burned; otherwise press the button of the drive again.</translation>
    </message>
    <message id="attempteraseshort">
        <source>Erase this disc?</source>
        <translation>Erase this disc?</translation>
    </message>
    <message id="attempteraselong">
        <source>Everything on the disc is deleted, in all its sessions. This cannot be undone.</source>
        <translation>Everything on the disc is deleted, in all its sessions. This cannot be undone.</translation>
    </message>
    <message id="EraseError">
        <source>The disc could not be erased</source>
        <translation>The disc could not be erased</translation>
    </message>
    <message id="EraseErrorLong">
        <source>The disc may hold what it held before, or no longer be readable: eject it and insert it again to see. A rewritable disc that cannot be erased the second time either is worn out or damaged; use another one.</source>
        <translation>The disc may hold what it held before, or no longer be readable: eject it and insert it again to see. A rewritable disc that cannot be erased the second time either is worn out or damaged; use another one.</translation>
    </message>
    <message id="EraseDriveBusy">
        <source>The drive is busy</source>
        <translation>The drive is busy</translation>
    </message>
    <message id="EraseDriveBusyLong">
        <source>The disc is being opened, written or erased at the moment, so your request to erase it was not carried out. Wait until that has ended, then try again.</source>
        <translation>The disc is being opened, written or erased at the moment, so your request to erase it was not carried out. Wait until that has ended, then try again.</translation>
    </message>
    <message id="EraseVolumeBusy">
        <source>The disc is still in use</source>
        <translation>The disc is still in use</translation>
    </message>
    <message id="EraseVolumeBusyLong">
        <source>A program still has files or folders of the disc open, so it has not been erased. Close that program, or leave the disc’s folder in it, then erase the disc again.</source>
        <translation>A program still has files or folders of the disc open, so it has not been erased. Close that program, or leave the disc’s folder in it, then erase the disc again.</translation>
    </message>
    <message id="EraseDiscChanged">
        <source>The disc in the drive is another one by now</source>
        <translation>The disc in the drive is another one by now</translation>
    </message>
    <message id="EraseDiscChangedLong">
        <source>The drive no longer holds the disc that stood in the list. Nothing has been erased. Look which disc is in the drive, and insert the one that you mean.</source>
        <translation>The drive no longer holds the disc that stood in the list. Nothing has been erased. Look which disc is in the drive, and insert the one that you mean.</translation>
    </message>
    <message id="BurnDiscChanged">
        <source>Another disc is in the drive</source>
        <translation>Another disc is in the drive</translation>
    </message>
    <message id="BurnDiscChangedLong">
        <source>The disc in the drive is not the one that you opened and changed, so nothing was written to it. Your changes are kept, and the report says where. Insert the disc that you opened, and copy the changes onto it.</source>
        <translation>The disc in the drive is not the one that you opened and changed, so nothing was written to it. Your changes are kept, and the report says where. Insert the disc that you opened, and copy the changes onto it.</translation>
    </message>
    <message id="BurnDiscInUse">
        <source>The disc is still in use</source>
        <translation>The disc is still in use</translation>
    </message>
    <message id="BurnDiscInUseLong">
        <source>A program uses the disc itself, which the desktop has mounted a second time, so nothing was written. Your changes are kept, and the report says where. Close that program, open the disc again and copy the changes onto it.</source>
        <translation>A program uses the disc itself, which the desktop has mounted a second time, so nothing was written. Your changes are kept, and the report says where. Close that program, open the disc again and copy the changes onto it.</translation>
    </message>
    <!-- Notifications of the desktop -->
    <message id="NoticeBurned">
        <source>The changes are on the disc</source>
        <translation>The changes are on the disc</translation>
    </message>
    <message id="NoticeBurnedLong">
        <source>The disc has been written and ejected.</source>
        <translation>The disc has been written and ejected.</translation>
    </message>
    <message id="NoticeBurnFailed">
        <source>The disc could not be written</source>
        <translation>The disc could not be written</translation>
    </message>
    <message id="NoticeBurnFailedLong">
        <source>The window of KelvaneFS tells why.</source>
        <translation>The window of KelvaneFS tells why.</translation>
    </message>
    <message id="NoticeErased">
        <source>The disc has been erased</source>
        <translation>The disc has been erased</translation>
    </message>
    <message id="NoticeErasedLong">
        <source>It is blank and can be written again.</source>
        <translation>It is blank and can be written again.</translation>
    </message>
    <message id="NoticeEraseFailed">
        <source>The disc could not be erased</source>
        <translation>The disc could not be erased</translation>
    </message>
    <message id="NoticeEraseFailedLong">
        <source>The window of KelvaneFS tells why.</source>
        <translation>The window of KelvaneFS tells why.</translation>
    </message>
    <!-- Licence agreement. The resource is the name of the agreement in this language. -->
    <message id="LicenseResource">
        <source>license_en</source>
        <translation>license_en</translation>
    </message>
    <message id="LicenseTitle">
        <source>Licence Agreement</source>
        <translation>Licence Agreement</translation>
    </message>
    <message id="LicenseAgree">
        <source>&amp;Agree</source>
        <translation>&amp;Agree</translation>
    </message>
    <message id="LicenseDisagree">
        <source>&amp;Disagree</source>
        <translation>&amp;Disagree</translation>
    </message>
    <!-- Update check -->
    <message id="updatecheck">
        <source>A newer version of KelvaneFS is available</source>
        <translation>A newer version of KelvaneFS is available</translation>
    </message>
    <message id="updatechecklong">
        <source>You can get it from the KelvaneFS page, which opens in your web browser. This version goes on working, and your discs are not affected.</source>
        <translation>You can get it from the KelvaneFS page, which opens in your web browser. This version goes on working, and your discs are not affected.</translation>
    </message>
    <message id="updatecheckdownload">
        <source>&amp;Go to Download</source>
        <translation>&amp;Go to Download</translation>
    </message>
    <message id="cancelbutton">
        <source>&amp;Not Now</source>
        <translation>&amp;Not Now</translation>
    </message>
    <!-- Amounts and names -->
    <message id="NumberLocale">
        <source>en_US</source>
        <translation>en_US</translation>
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
        <translation>1 file</translation>
    </message>
    <message id="ManyFiles">
        <source>%@ files</source>
        <translation>%@ files</translation>
    </message>
    <message id="OneFolder">
        <source>1 folder</source>
        <translation>1 folder</translation>
    </message>
    <message id="ManyFolders">
        <source>%@ folders</source>
        <translation>%@ folders</translation>
    </message>
    <message id="QuotedName">
        <source>“%@”</source>
        <translation>“%@”</translation>
    </message>
    <message id="AndMore">
        <source>%@ and %i more</source>
        <translation>%@ and %i more</translation>
    </message>
    <message id="AccessibleWarning">
        <source>Warning</source>
        <translation>Warning</translation>
    </message>
    <message id="AccessibleError">
        <source>Error</source>
        <translation>Error</translation>
    </message>
    <message id="AccessibleQuestion">
        <source>Question</source>
        <translation>Question</translation>
    </message>
    <message id="AccessibleInformation">
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <!-- What a burn will change, in the burn confirmation sheet -->
    <message id="Summary">
        <source>What will change</source>
        <translation>What will change</translation>
    </message>
    <message id="SummaryLooking">
        <source>Finding out what will change…</source>
        <translation>Finding out what will change…</translation>
    </message>
    <message id="SummaryAdded">
        <source>Added:</source>
        <translation>Added:</translation>
    </message>
    <message id="SummaryReplaced">
        <source>Replaced:</source>
        <translation>Replaced:</translation>
    </message>
    <message id="SummaryRenamed">
        <source>Renamed or moved:</source>
        <translation>Renamed or moved:</translation>
    </message>
    <message id="SummaryDeleted">
        <source>Deleted:</source>
        <translation>Deleted:</translation>
    </message>
    <message id="SummaryNeeded">
        <source>Space needed:</source>
        <translation>Space needed:</translation>
    </message>
    <message id="SummaryLeft">
        <source>Free afterwards:</source>
        <translation>Free afterwards:</translation>
    </message>
    <message id="SummaryAbout">
        <source>about %@</source>
        <translation>about %@</translation>
    </message>
    <message id="SummaryProblem">
        <source>The new session cannot be prepared</source>
        <translation>The new session cannot be prepared</translation>
    </message>
    <message id="SummaryProblemLong">
        <source>%@

If you burn all the same, nothing is written and your changes are lost. Keep the changes in a folder, then open the disc again and copy them onto it without the cause.</source>
        <translation>%@

If you burn all the same, nothing is written and your changes are lost. Keep the changes in a folder, then open the disc again and copy them onto it without the cause.</translation>
    </message>
    <message id="SummaryDiscProblem">
        <source>No more can be added to this disc</source>
        <translation>No more can be added to this disc</translation>
    </message>
    <message id="SummaryDiscProblemLong">
        <source>%@

If you burn all the same, nothing is written and your changes are lost. Keep the changes in a folder, and put them on another disc together with what this one holds.</source>
        <translation>%@

If you burn all the same, nothing is written and your changes are lost. Keep the changes in a folder, and put them on another disc together with what this one holds.</translation>
    </message>
    <message id="SummaryTooLarge">
        <source>The changes do not fit on the disc</source>
        <translation>The changes do not fit on the disc</translation>
    </message>
    <message id="SummaryTooLargeLong">
        <source>They need %@, and %@ are free: that is %@ too much. Keep the changes in a folder, then open the disc again and copy less onto it, or use another disc.</source>
        <translation>They need %@, and %@ are free: that is %@ too much. Keep the changes in a folder, then open the disc again and copy less onto it, or use another disc.</translation>
    </message>
    <message id="SummaryHidden">
        <source>Something would be missing that you did not delete</source>
        <translation>Something would be missing that you did not delete</translation>
    </message>
    <message id="SummaryHiddenLong">
        <source>A name that you deleted, with special characters in it, also stands for %@. In the new session that would be hidden, too. Keep the changes in a folder, open the disc again, and give what you want to keep another name.</source>
        <translation>A name that you deleted, with special characters in it, also stands for %@. In the new session that would be hidden, too. Keep the changes in a folder, open the disc again, and give what you want to keep another name.</translation>
    </message>
    <message id="SummaryShownStill">
        <source>Something that you deleted would still be listed</source>
        <translation>Something that you deleted would still be listed</translation>
    </message>
    <message id="SummaryShownStillLong">
        <source>The program that writes discs cannot hide these names, which have a backslash or a line break in them: %@. In the new session each of them is left as an empty file. You can burn all the same.</source>
        <translation>The program that writes discs cannot hide these names, which have a backslash or a line break in them: %@. In the new session each of them is left as an empty file. You can burn all the same.</translation>
    </message>
    <message id="BurnConfirmationKeep">
        <source>&amp;Keep in Folder</source>
        <translation>&amp;Keep in Folder</translation>
    </message>
    <message id="BurnConfirmationKeepLong">
        <source>Burn nothing, and keep new and changed files in a folder on this computer</source>
        <translation>Burn nothing, and keep new and changed files in a folder on this computer</translation>
    </message>
    <message id="ChangesKept">
        <source>Your changes are kept on this computer</source>
        <translation>Your changes are kept on this computer</translation>
    </message>
    <message id="ChangesKeptLong">
        <source>Nothing was written: the disc holds what it held before, and what you deleted is still on it. New and changed files lie in the folder that the report names. It is one for temporary files, so move them elsewhere before the computer is switched off.</source>
        <translation>Nothing was written: the disc holds what it held before, and what you deleted is still on it. New and changed files lie in the folder that the report names. It is one for temporary files, so move them elsewhere before the computer is switched off.</translation>
    </message>
    <!-- Copying files onto the open disc -->
    <message id="AccessibleMountedItemLong">
        <source>Drop files or folders here to copy them onto the disc, or paste them with Ctrl+V.</source>
        <translation>Drop files or folders here to copy them onto the disc, or paste them with Ctrl+V.</translation>
    </message>
    <message id="Copying">
        <source>Copying onto the disc</source>
        <translation>Copying onto the disc</translation>
    </message>
    <message id="CopyLooking">
        <source>Finding out what is to be copied…</source>
        <translation>Finding out what is to be copied…</translation>
    </message>
    <message id="CopyName">
        <source>Copying “%@”</source>
        <translation>Copying “%@”</translation>
    </message>
    <message id="CopyAmount">
        <source>%@ of %@ – %@ of %@</source>
        <translation>%@ of %@ – %@ of %@</translation>
    </message>
    <message id="UnderAMinuteLeft">
        <source>Less than a minute left</source>
        <translation>Less than a minute left</translation>
    </message>
    <message id="MinutesLeft">
        <source>About %i minutes left</source>
        <translation>About %i minutes left</translation>
    </message>
    <message id="CopyCancelling">
        <source>Cancelling…</source>
        <translation>Cancelling…</translation>
    </message>
    <message id="AccessibleCopyProgress">
        <source>Progress of the copying</source>
        <translation>Progress of the copying</translation>
    </message>
    <message id="AccessibleCopyAmount">
        <source>How much is copied</source>
        <translation>How much is copied</translation>
    </message>
    <message id="AccessibleRemainingTime">
        <source>Remaining time</source>
        <translation>Remaining time</translation>
    </message>
    <message id="CopyTaken">
        <source>“%@” is on the disc already</source>
        <translation>“%@” is on the disc already</translation>
    </message>
    <message id="CopyTakenLong">
        <source>If you replace it, the file on the disc gives way to the one that you are copying. If you keep both, that one gets a number after its name.</source>
        <translation>If you replace it, the file on the disc gives way to the one that you are copying. If you keep both, that one gets a number after its name.</translation>
    </message>
    <message id="CopyTakenByFolder">
        <source>One of the two is a folder and the other is not, so neither can take the other’s place. If you keep both, the one that you are copying gets a number after its name.</source>
        <translation>One of the two is a folder and the other is not, so neither can take the other’s place. If you keep both, the one that you are copying gets a number after its name.</translation>
    </message>
    <message id="CopyForAll">
        <source>&amp;Do the same for all names that are taken</source>
        <translation>&amp;Do the same for all names that are taken</translation>
    </message>
    <message id="CopyReplace">
        <source>&amp;Replace</source>
        <translation>&amp;Replace</translation>
    </message>
    <message id="CopyKeepBoth">
        <source>&amp;Keep Both</source>
        <translation>&amp;Keep Both</translation>
    </message>
    <message id="CopySkip">
        <source>&amp;Skip</source>
        <translation>&amp;Skip</translation>
    </message>
    <message id="CopyNoRoom">
        <source>There is not enough room for these files</source>
        <translation>There is not enough room for these files</translation>
    </message>
    <message id="CopyNoRoomLong">
        <source>Nothing has been copied. The files have to find room on the disc, and until it is burned in this computer’s folder for temporary files. Copy less, or make room.</source>
        <translation>Nothing has been copied. The files have to find room on the disc, and until it is burned in this computer’s folder for temporary files. Copy less, or make room.</translation>
    </message>
    <message id="CopyRoom">
        <source>%@ are needed, %@ are free.</source>
        <translation>%@ are needed, %@ are free.</translation>
    </message>
    <message id="CopyFailures">
        <source>Not everything could be copied</source>
        <translation>Not everything could be copied</translation>
    </message>
    <message id="CopyFailuresLong">
        <source>All other files and folders are on the volume. What is missing is named below; the system log has the whole list.</source>
        <translation>All other files and folders are on the volume. What is missing is named below; the system log has the whole list.</translation>
    </message>
    <message id="CopyFailure">
        <source>“%@”: %@</source>
        <translation>“%@”: %@</translation>
    </message>
    <message id="CopyMoreFailures">
        <source>and %i more</source>
        <translation>and %i more</translation>
    </message>
    <message id="CopyNotReadable">
        <source>it cannot be read</source>
        <translation>it cannot be read</translation>
    </message>
    <message id="CopyNoRoomLeft">
        <source>no room is left</source>
        <translation>no room is left</translation>
    </message>
    <message id="CopyTooLarge">
        <source>it has 4 GB or more, which no file on a disc can have</source>
        <translation>it has 4 GB or more, which no file on a disc can have</translation>
    </message>
    <message id="CopyNotAFile">
        <source>it is neither a file nor a folder</source>
        <translation>it is neither a file nor a folder</translation>
    </message>
    <message id="CopyHoldsTheVolume">
        <source>the disc itself is in this folder</source>
        <translation>the disc itself is in this folder</translation>
    </message>
    <message id="CopyAlreadyThere">
        <source>it is on the disc already, in the same place</source>
        <translation>it is on the disc already, in the same place</translation>
    </message>
    <message id="CopyRunning">
        <source>Files are still being copied onto the disc</source>
        <translation>Files are still being copied onto the disc</translation>
    </message>
    <message id="CopyRunningLong">
        <source>The disc stays open until they are copied. Wait for that, or cancel the copying, and close the disc then.</source>
        <translation>The disc stays open until they are copied. Wait for that, or cancel the copying, and close the disc then.</translation>
    </message>
</context>
</TS>
