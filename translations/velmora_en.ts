<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>AccountDialog</name>
    <message>
        <source>First name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Velmora Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in to keep your watch list and purchases.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The e-mail address you signed up with</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your member password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign In</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signs in with this e-mail and password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Forgot Password?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the page that resets your password in the browser</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create an Account…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the form that creates an account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create a free Velmora account.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your e-mail address, which you sign in with</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The password you will sign in with</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your first name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your last name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creates the account and signs in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>I Have an Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the sign-in form instead</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your %1 as the service keeps it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sends these details to the service</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign Out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signs out and forgets the stored password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service did not answer; try again later.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signed in as %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signed in as %1, a member since %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AccountField</name>
    <message>
        <source>First name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>E-mail</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Address</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>City</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>State</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Postal code</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Country</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AppListModel</name>
    <message>
        <source>Installing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Downloading</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>App</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Released</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CartDialog</name>
    <message>
        <source>Buy Now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Buy %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 for %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where the order is sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Status</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Orders this deal for your account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sending the order…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ordered. The purchase shows under Purchases once the service has it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The deals host did not take the order; try again later.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CheckWorker</name>
    <message>
        <source>No applications were found!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please make sure that you have Spotlight enabled and permissions to access your Applications folder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking for updates...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Waiting for match data...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Syncing Done</source>
        <translation type="unfinished"></translation>
    </message>
</context>
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
    <message>
        <source>Check the installed applications for updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli check [--background] [--json]

Scans this computer, sends the installed applications to the service in one request, keeps the
catalogue&apos;s answers in the stored scan, and prints the applications with an update, one line each:
display name, installed version and newest version, separated by tabs. With --json, prints them as
a JSON array with every field.
  --background  check as the periodic background check does: no alerts, and apps the service
                knows but that are not installed are not added
A failed exchange prints the reason on stderr, exits with 1 and leaves the stored scan as it was
before the exchange.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the check with the service failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Skip an app&apos;s current update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Treat an app&apos;s installed copy as the newest version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Read an app&apos;s installed version from its files again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Never list an app as outdated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli %1 APP [--undo]

%2. APP is a display name, a catalogue id or the path of an installed app, as &quot;velmora-cli list&quot;
shows them. The choice is kept in the stored scan; --undo takes it back.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name one app</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no check has been made yet; run velmora-cli check first</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no app %1 in the stored scan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 names %2 apps; use a catalogue id or a path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the stored scan could not be written</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep checking for updates in the background</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no check has been made yet; run velmora-cli check</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>install</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>cannot be installed from a link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>up to date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>give one link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not an install link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the link names no app the service knows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the stored scan %1 is damaged (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it could not be kept aside</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it was kept as %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a password is never taken from the command line; type it when asked, or pipe it in with --password-stdin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no keychain is available; the sign-in holds for this run only</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password: </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sign in, sign up, or change the member account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli account login [--email E] [--password-stdin]
       velmora-cli account signup --email E --first F --last L [--password-stdin]
       velmora-cli account status | logout | forgot-password
       velmora-cli account profile [--set FIELD=VALUE...]

The member account with the Velmora service. login and signup ask on the terminal for what is
missing, the password without echo; --password-stdin reads it from the first line of stdin
instead. A password is never taken as an argument. Once signed in, the password is kept in the
keychain (the desktop&apos;s Secret Service), so later runs are signed in too; logout forgets it.
profile prints the member&apos;s profile, or changes fields of it: firstname, lastname, email,
address, city, state, zip, country. forgot-password prints the page that resets a password and
opens it when a desktop session is there. status and profile print JSON with --json.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name an action</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Email: </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no e-mail address or password was given</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the service did not answer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signed in as %1 &lt;%2&gt;, member %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not signed in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unknown profile field %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the service did not save the profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signed out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Buy a deal</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli cart DEAL

Orders the deal with id DEAL (as velmora-cli deals shows it) for the signed-in member, with the
member&apos;s postal address. The purchase then shows in velmora-cli purchases.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name one deal by its id</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the deals host did not take the order</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ordered deal %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no terminal to ask on; --yes answers yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1? [y/N] (no: %2) </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>installing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show the current deals</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli deals [--json]

Prints the discounted apps of the deals host, the two featured ones first: display name, deal
id (for velmora-cli cart), price, discount, and &quot;featured&quot; for the first two.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no deals could be had from the deals host</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not signed in; run velmora-cli account login first</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Install what an install link offers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli open-link URL [--yes]

Reads an install link (velmora://bundle/ID or velmora://app/ID/NAME/VERSION), looks each linked app
up in the stored scan or asks the service about it, and prints one line per app: display name,
catalogue id and what the link asks for (update, install, up to date, or cannot be installed from
a link), separated by tabs. Then it downloads and installs the apps to update or install, as
&quot;velmora-cli update&quot; does (see its help for --yes), and prints a line for each one installed.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show the member&apos;s purchases</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli purchases [--json]

Prints the signed-in member&apos;s purchases, newest first: display name, catalogue id, order id,
order date, purchased version. They are merged into the stored scan, as the desktop program
keeps them.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Report a problem with an app</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli report APP --text TEXT

Sends TEXT to the Velmora service as a problem report about APP (a display name, a catalogue id
or the path of an installed app of the stored scan), with the app&apos;s versions and path, and the
member id when signed in.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name one app and give the report&apos;s text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no single app %1 in the stored scan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the service did not take the report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Report sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Make a short link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli shorten URL

Prints a short link for URL from the short-link host (setting shortenerHost). A URL without
&quot;http://&quot; in front gets it.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the short-link host gave no short link</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update every outdated app</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update outdated apps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli update-all [--yes]

Updates every app that &quot;velmora-cli list --outdated&quot; shows.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli update APP... [--yes]

Updates the named outdated apps. APP is a display name, a catalogue id or the path of an
installed app, as &quot;velmora-cli list --outdated&quot; shows them.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>
Each update downloads the newest version, checks it against the catalogue&apos;s checksum,
unpacks it and puts it in place of the installed copy, which is kept until the new one
is in place. At most three updates run at once, each with a progress bar on a terminal.
An app that is running is quit first and started again afterwards, when you agree:
  --yes  agree without asking (without a terminal and without --yes, running apps are
         left alone and their updates skipped)
Prints one line per updated app (display name, installed version, path). An update that
fails prints its reason on stderr; the exit status is then 1.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name at least one app</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>update-all takes no app names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no outdated app %1 in the stored scan</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Every app is up to date.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>canceled</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>nothing was installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the service did not change the watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show or change the member&apos;s watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli watchlist [add APP | remove APP] [--json]

Prints the apps on the signed-in member&apos;s watch list (display name, catalogue id, installed
version, newest version), after adding or removing APP when asked. APP is a display name, a
catalogue id or the path of an installed app. The list is merged into the stored scan, as the
desktop program keeps it: apps that are not installed become records of their own.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unexpected arguments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>this app is never updated from here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No crash reports</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>crash reporting is turned off (QuincyActivated)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the crash report could not be sent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the service refused the crash report (HTTP %1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Crash report sent to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List, show, send or discard crash reports</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli crash-reports [list|show N|send N [--details TEXT]|discard N]

When the desktop program or the daemon crashes, it leaves a crash report in the data folder
(a few at most, the oldest go). Nothing is sent unless you say so here, or the setting
QuincyAutomaticallySendCrashReports is YES; QuincyActivated NO turns crash reports off.

  list                      the reports, newest first, numbered (the default)
  show N                    report N exactly as it would be sent
  send N [--details TEXT]   send report N to Velmora, with what you were doing
  discard N                 delete report N
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>unexpected arguments %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no crash report %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>cannot delete %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Usage: velmora-cli daemon [--login-item]

Runs as the desktop program does without its windows: checks at start when the stored scan is
older than four hours, then in the background every 3,400 seconds, keeps the login item in step
with the setting startupItem, and prints notifications on stderr; in a desktop session with a
notification server they are shown there too, and a click on one is acted on. SIGTERM or Ctrl-C
ends it after the running step. --login-item marks a start by the login item, which never forces
a scan.
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Crash report waiting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Velmora Desktop crashed earlier; see velmora-cli crash-reports</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DesktopApp</name>
    <message>
        <source>Share %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The short link %1 is on the clipboard.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No tray</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desktop shows no tray icons, so Velmora Desktop runs as a window.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Report a problem</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What is wrong with %1?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DetailsPane</name>
    <message>
        <source>Release notes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Downloads and installs the new version, or cancels it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore this version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Skips this version; a newer one is offered again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installed version is current</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Counts the installed copy as the newest version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Don&apos;t check for updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Never lists this app as outdated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On my watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keeps the app on your watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Report a problem…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Share…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No app selected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Newest: %1 (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Buy Now…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Buy Now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the cart for this deal</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deal price: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tells the service about a problem with this app</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Makes a short link to this app&apos;s page</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PanelListModel</name>
    <message>
        <source>Space updates the app or cancels its update; the menu key opens its actions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, version %2, new version %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, updating to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, installing %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, updated to %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, update failed: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PanelMenus</name>
    <message>
        <source>Update All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Launch Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit Velmora Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View in Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove from Watch List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add to Watch List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View on </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View in Mac App Store</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open in VLDVersion</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete with AppDelete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Report a problem</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set version to installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set version to current</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PanelRowDelegate</name>
    <message>
        <source>%1 → %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Actions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PlacingRoom</name>
    <message>
        <source>%1 needs %2 MB and %3 MB must stay free, but %4 has %5 MB free</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PreferencesDialog</name>
    <message>
        <source>Show the icon in the tray</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Without it Velmora Desktop runs as a normal window</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>General</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start at login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checks for updates in the background from the moment you log in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Notify when an update has completed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows a desktop notification for each finished update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep a copy of each download</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keeps downloaded files in Downloads/Velmora Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send anonymous usage statistics</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Helps us learn which features are used</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List App Store copies</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Includes apps bought in the App Store among the updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Offer beta versions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lists updates to beta versions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List paid upgrades</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lists new versions that must be bought</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List updates that need a newer system</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lists versions this system cannot run yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>List apps without a match</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows installed apps the catalogue does not know</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>E-mail me about my watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The service writes when a watched app has a new version</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add updated apps to my watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Every app you update joins your watch list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The setting could not be saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort the lists by</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Release date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Developer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Closes the preferences; every change is already saved</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>The crash report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exactly what is sent, besides what you write below</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What were you doing when it happened? (optional)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Send Report</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Don&apos;t Send</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QuitAndRelaunchGate</name>
    <message>
        <source>Please quit the application before continuing installation.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is running.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit App and Proceed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Skip Installation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installation skipped: %1 is running</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 did not quit; the update was not installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installation skipped: %1 is running for another user</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SSKeychainQuery</name>
    <message>
        <source>Some of the arguments were invalid</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SecretStore</name>
    <message>
        <source>No error.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The specified item could not be found in the keychain.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No keychain is available.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An error occurred while using the keychain (%1).</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UnpackBudget</name>
    <message>
        <source>less than %1 MB are free in %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the archive unpacks to more than %1 MB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the archive unpacks to more than %1 files</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UpdateNotices</name>
    <message>
        <source>%1 new update is available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update your app now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 new updates are available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update your apps now</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLAppDownload</name>
    <message>
        <source>Problem saving download file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No direct download found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Download - 404 Not Found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The downloaded file does not match the catalogue&apos;s checksum; nothing was installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error extracting zip file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error extracting tgz file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error extracting tbz file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error extracting bz2 file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problem installing from DMG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Problem installing from PKG</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Install Complete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> has been installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Launch</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update Complete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> has been updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An update of %1 is already running</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLCrashReporter</name>
    <message>
        <source>%1 quit unexpectedly</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 crashed the last time it ran. You can send the report below to %2 to help find the cause, and add what you were doing. Nothing is sent without your word.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLInstaller</name>
    <message>
        <source>Installer did not complete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the archive holds a device, pipe or socket</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not enough free space: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLMainWindow</name>
    <message>
        <source>Check for Updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Velmora Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Views</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Watch List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Purchases</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deals</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search apps</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Scans this computer and asks the service for updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update All</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the sign-in form, or your profile when you are signed in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stops the updates that are running or waiting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updates every outdated app in turn</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLMainWindowController</name>
    <message>
        <source>Scanning for applications...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>done scanning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 new updates are available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Scanning Complete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update your apps now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A check for updates is running already.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLMemberAccount</name>
    <message>
        <source>Please enter email and password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Incorrect email or password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please enter required account info</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Invalid Email address</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Processing...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Server Error 625</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Server Error 624</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error 626</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name and Email address are required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Account information saved</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLMemberSession</name>
    <message>
        <source>The service did not save the profile</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLMenubarController</name>
    <message>
        <source>Velmora Desktop: no updates available</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Velmora Desktop: %n update(s) available</source>
        <translation>
            <numerusform>Velmora Desktop: %n update available</numerusform>
            <numerusform>Velmora Desktop: %n updates available</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>VLPanelController</name>
    <message>
        <source>Velmora Desktop updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Velmora Desktop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Number of updates available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Menu</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update all, open the window, preferences, quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Discover new apps on </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the site&apos;s discover page in the browser</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No updates available</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking for updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apps with updates</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Newest first; Space updates the current app, the menu key opens its actions</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLPurchases</name>
    <message>
        <source>There was an error receiving purchase history.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLSendAllatOnceHelper</name>
    <message>
        <source>There was an error receiving updates.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Please try Check for Updates again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Connection error!</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLSynchronousTask</name>
    <message>
        <source>%1 could not be started</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 did not finish within %2 seconds and was stopped</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 was stopped by signal %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 failed with status %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VLWatchLists</name>
    <message>
        <source>There was an error receiving watch lists.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Velmora Desktop keeps your apps up to date.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Started by the login item: never scans at once.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Renders the panel, the window and the preferences as PNG files into DIR, and exits.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copies the log to stderr.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>velmora:// install links to open.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
