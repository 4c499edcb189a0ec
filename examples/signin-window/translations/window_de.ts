<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CodeForm</name>
    <message>
        <source>Sen&amp;d code</source>
        <translation>Code &amp;senden</translation>
    </message>
    <message>
        <source>Again in %1 s</source>
        <translation>Erneut in %1 s</translation>
    </message>
    <message>
        <source>C&amp;haracters:</source>
        <translation>&amp;Zeichen:</translation>
    </message>
    <message>
        <source>C&amp;ode:</source>
        <translation>&amp;Code:</translation>
    </message>
    <message>
        <source>Picture with characters</source>
        <translation>Bild mit Zeichen</translation>
    </message>
    <message>
        <source>Another picture</source>
        <translation>Anderes Bild</translation>
    </message>
    <message>
        <source>Pict&amp;ure, press it for another:</source>
        <translation>B&amp;ild, Klick zeigt ein anderes:</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Erneut versuchen</translation>
    </message>
</context>
<context>
    <name>CountryBox</name>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>%1 (+%2)</source>
        <translation>%1 (+%2)</translation>
    </message>
</context>
<context>
    <name>PasswordField</name>
    <message>
        <source>Pass&amp;word:</source>
        <translation>Pass&amp;wort:</translation>
    </message>
    <message>
        <source>S&amp;how</source>
        <translation>An&amp;zeigen</translation>
    </message>
    <message>
        <source>Show the password</source>
        <translation>Passwort anzeigen</translation>
    </message>
</context>
<context>
    <name>ProfilePage</name>
    <message>
        <source>&amp;Refresh</source>
        <translation>&amp;Aktualisieren</translation>
    </message>
    <message>
        <source>Sign &amp;out</source>
        <translation>Ab&amp;melden</translation>
    </message>
    <message>
        <source>Welcome</source>
        <translation>Willkommen</translation>
    </message>
    <message>
        <source>Welcome, %1</source>
        <translation>Willkommen, %1</translation>
    </message>
    <message>
        <source>E-mail:</source>
        <translation>E-Mail:</translation>
    </message>
    <message>
        <source>Phone:</source>
        <translation>Telefon:</translation>
    </message>
    <message>
        <source>Company:</source>
        <translation>Firma:</translation>
    </message>
    <message>
        <source>Last sign-in:</source>
        <translation>Letzte Anmeldung:</translation>
    </message>
</context>
<context>
    <name>SignInPage</name>
    <message>
        <source>&amp;Account:</source>
        <translation>&amp;Konto:</translation>
    </message>
    <message>
        <source>Re&amp;member me on this computer</source>
        <translation>Auf diesem Computer &amp;merken</translation>
    </message>
    <message>
        <source>&amp;Sign in</source>
        <translation>&amp;Anmelden</translation>
    </message>
    <message>
        <source>User name, e-mail or phone number</source>
        <translation>Benutzername, E-Mail oder Telefonnummer</translation>
    </message>
    <message>
        <source>By &amp;password</source>
        <translation>Mit &amp;Passwort</translation>
    </message>
    <message>
        <source>By &amp;verification code</source>
        <translation>Mit &amp;Bestätigungscode</translation>
    </message>
    <message>
        <source>Sign in</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <source>&amp;Calling code, for a phone number:</source>
        <translation>&amp;Ländervorwahl, für eine Telefonnummer:</translation>
    </message>
    <message>
        <source>The code is on its way to you.</source>
        <translation>Der Code ist unterwegs.</translation>
    </message>
    <message>
        <source>Please type your user name, e-mail or phone number.</source>
        <translation>Bitte Benutzername, E-Mail oder Telefonnummer eingeben.</translation>
    </message>
    <message>
        <source>Please type your password.</source>
        <translation>Bitte das Passwort eingeben.</translation>
    </message>
    <message>
        <source>Please type the code.</source>
        <translation>Bitte den Code eingeben.</translation>
    </message>
    <message>
        <source>Your account is filled in: you can sign in now.</source>
        <translation>Das Konto ist eingetragen: Sie können sich jetzt anmelden.</translation>
    </message>
</context>
<context>
    <name>SignInWindow</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <source>Waiting for the account service</source>
        <translation>Warten auf den Kontodienst</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>WebLinks</name>
    <message>
        <source>Create accou&amp;nt</source>
        <translation>Konto &amp;erstellen</translation>
    </message>
    <message>
        <source>&amp;Forgotten password?</source>
        <translation>Passwort &amp;vergessen?</translation>
    </message>
    <message>
        <source>The pages for this are not installed.</source>
        <translation>Die Seiten dafür sind nicht installiert.</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>en_US</source>
        <extracomment>The locale of this translation: language, underscore, country</extracomment>
        <translation>de_DE</translation>
    </message>
    <message>
        <source>That did not work.</source>
        <translation>Das hat nicht geklappt.</translation>
    </message>
</context>
</TS>
