<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Cli</name>
    <message>
        <source>cannot write the settings file %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read, write and delete the program&apos;s settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli defaults read [KEY]
       velmora-cli defaults write KEY [-bool|-int|-float|-string|-array] VALUE...
       velmora-cli defaults delete KEY

read without a KEY prints every setting with its value, the registered default where none was
written; with a KEY, only that value. With --json, prints JSON instead.
write stores a value: a boolean (YES, NO, true, false, 1, 0), an integer, a decimal number, a text,
or with -array a list of texts (each further word is one element). Without a type, a known setting
takes its own type and any other key a text.
delete removes a written value, so that the registered default applies again.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>defaults needs read, write or delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unknown action %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>defaults read takes at most one KEY</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the setting %1 has no value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>defaults write needs a KEY and a VALUE</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 cannot be a setting&apos;s name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unknown type %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>write a list with -array</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is a setting of type %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>defaults write needs exactly one VALUE for %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>defaults delete needs exactly one KEY</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the setting %1 was not written; nothing deleted</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a bundle: it has no Info.plist</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read installed bundles and print their versions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli inspect [--json] PATH...

Reads each bundle (Foo.app, Bar.prefPane, ...) the way a scan does and prints one line per bundle:
display name, bundle identifier, installed version, kind, and App Store or not, separated by tabs.
With --json, prints a JSON array with one object per bundle, keyed by the record&apos;s field names.
A path that does not exist is an error; a folder that is not a readable bundle is read anyway
(its versions are &quot;-&quot;) with a warning on stderr.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unknown option %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>inspect needs at least one PATH</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Print the applications of the last scan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli list [--outdated | --installed | --all] [--json]

Prints the records of the stored scan in stored order, one line each: display name, installed
version, newest version and path, separated by tabs (&quot;-&quot; where nothing is known).
  --all        every record, including purchases and deals that are not installed (the default)
  --installed  the records of applications installed on this computer
  --outdated   the installed applications with an update, as the update list shows them (the
               settings showMAS, showBeta, showPaidUpgrades and showNewerOS apply)
With --json, prints a JSON array with one object per record, with every field.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>choose one of --outdated, --installed and --all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unexpected argument %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli [--verbose] [--json] COMMAND [ARGUMENTS]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Velmora Desktop finds the applications on this computer and keeps them up to date.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Options:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>print JSON on stdout (commands that list records)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>copy the program&apos;s log lines to stderr</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>print the version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>print this help; velmora-cli COMMAND --help explains one command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unknown command %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find the applications installed on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli scan [--json]

Searches the application, plug-in, widget and screen-saver folders (under the setting volumeRoot and
your home folder, then the folders of the setting searchpaths), leaves out what the blacklist
names, and prints one line per application, sorted by file name: display name, installed version
and path, separated by tabs. With --json, prints a JSON array with one object per application.
The stored scan is not changed.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a boolean (YES, NO, true, false, 1 or 0)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not an integer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clean and compare version texts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli version clean TEXT
       velmora-cli version compare A B
       velmora-cli version outdated LOCAL REMOTE

clean     prints the version found in TEXT (&quot;Version 2.1 (Build 4)&quot; gives 2.1)
compare   prints 0 when A is newer, 1 when A is older, 2 when they are the same
outdated  prints true when the installed LOCAL is older than the catalogue&apos;s REMOTE

Every word after clean, compare or outdated is taken as it is, even one that
starts with &quot;-&quot;; quote texts with blanks.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>version needs clean TEXT, compare A B or outdated LOCAL REMOTE</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
