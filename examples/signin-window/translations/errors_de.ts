<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Errors</name>
    <message>
        <source>Done.</source>
        <translation>Erledigt.</translation>
    </message>
    <message>
        <source>The service has refused this.</source>
        <translation>Der Dienst hat das abgelehnt.</translation>
    </message>
    <message>
        <source>This account is locked. Please contact support.</source>
        <translation>Dieses Konto ist gesperrt. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>You are not signed in, or no longer. Please sign in, then try again.</source>
        <translation>Sie sind nicht oder nicht mehr angemeldet. Bitte melden Sie sich an und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>There is already an account with this e-mail or phone number.</source>
        <translation>Zu dieser E-Mail-Adresse oder Telefonnummer gibt es schon ein Konto.</translation>
    </message>
    <message>
        <source>The service gave an answer that could not be read. Please try again later.</source>
        <translation>Die Antwort des Dienstes war nicht lesbar. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>This application may not use the service. Please contact support.</source>
        <translation>Diese Anwendung darf den Dienst nicht verwenden. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>The service is out of order. Please try again later.</source>
        <translation>Der Dienst ist gestört. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The service failed without saying why. Please try again later.</source>
        <translation>Der Dienst hat ohne Angabe von Gründen versagt. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The address of the service is not valid. Please contact support.</source>
        <translation>Die Adresse des Dienstes ist ungültig. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>There is no such account. A phone number needs its calling code.</source>
        <translation>Dieses Konto gibt es nicht. Zu einer Telefonnummer gehört die Ländervorwahl.</translation>
    </message>
    <message>
        <source>The service does not answer. Please check the network and try again.</source>
        <translation>Der Dienst antwortet nicht. Bitte prüfen Sie das Netzwerk und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The service does not answer. Please try again later.</source>
        <translation>Der Dienst antwortet nicht. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The connection broke off. Please try again.</source>
        <translation>Die Verbindung ist abgebrochen. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The service cannot be found. Please check that this computer is online.</source>
        <translation>Der Dienst ist nicht zu finden. Bitte prüfen Sie, ob dieser Computer online ist.</translation>
    </message>
    <message>
        <source>The service took too long. Please try again.</source>
        <translation>Der Dienst hat zu lange gebraucht. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>This was cancelled.</source>
        <translation>Das wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The connection to the service would not be safe. Please check this computer&apos;s date and time.</source>
        <translation>Die Verbindung zum Dienst wäre nicht sicher. Bitte prüfen Sie Datum und Uhrzeit dieses Computers.</translation>
    </message>
    <message>
        <source>The network failed for a moment. Please try again.</source>
        <translation>Das Netzwerk war kurz gestört. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>There is no network connection. Please check the network and try again.</source>
        <translation>Es besteht keine Netzwerkverbindung. Bitte prüfen Sie das Netzwerk und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The system does not allow this connection now. Please try again later.</source>
        <translation>Das System lässt diese Verbindung gerade nicht zu. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The service is not set up correctly. Please contact support.</source>
        <translation>Der Dienst ist nicht richtig eingerichtet. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>The service is not set up safely. Please contact support.</source>
        <translation>Der Dienst ist nicht sicher eingerichtet. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>The connection failed. Please try again later.</source>
        <translation>Die Verbindung ist fehlgeschlagen. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The proxy does not answer. Please check the proxy settings.</source>
        <translation>Der Proxy antwortet nicht. Bitte prüfen Sie die Proxy-Einstellungen.</translation>
    </message>
    <message>
        <source>The connection through the proxy broke off. Please try again.</source>
        <translation>Die Verbindung über den Proxy ist abgebrochen. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The proxy cannot be found. Please check the proxy settings.</source>
        <translation>Der Proxy ist nicht zu finden. Bitte prüfen Sie die Proxy-Einstellungen.</translation>
    </message>
    <message>
        <source>The proxy took too long. Please try again later.</source>
        <translation>Der Proxy hat zu lange gebraucht. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The proxy asks for a name and a password. Please check the proxy settings.</source>
        <translation>Der Proxy verlangt einen Namen und ein Passwort. Bitte prüfen Sie die Proxy-Einstellungen.</translation>
    </message>
    <message>
        <source>The proxy failed. Please check the proxy settings.</source>
        <translation>Der Proxy hat versagt. Bitte prüfen Sie die Proxy-Einstellungen.</translation>
    </message>
    <message>
        <source>The service does not allow this.</source>
        <translation>Der Dienst lässt das nicht zu.</translation>
    </message>
    <message>
        <source>The service cannot do this.</source>
        <translation>Der Dienst kann das nicht.</translation>
    </message>
    <message>
        <source>The service cannot be found at its address. Please contact support.</source>
        <translation>Der Dienst ist unter seiner Adresse nicht zu finden. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>The service asks for a sign-in. Please sign in, then try again.</source>
        <translation>Der Dienst verlangt eine Anmeldung. Bitte melden Sie sich an und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>The request could not be sent completely. Please try again.</source>
        <translation>Die Anfrage konnte nicht vollständig gesendet werden. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>This has been changed in the meantime. Please look again.</source>
        <translation>Das wurde inzwischen geändert. Bitte sehen Sie noch einmal nach.</translation>
    </message>
    <message>
        <source>The service no longer offers this. Please update the application.</source>
        <translation>Der Dienst bietet das nicht mehr an. Bitte aktualisieren Sie die Anwendung.</translation>
    </message>
    <message>
        <source>The service does not understand the request. Please update the application.</source>
        <translation>Der Dienst versteht die Anfrage nicht. Bitte aktualisieren Sie die Anwendung.</translation>
    </message>
    <message>
        <source>The service is not available now. Please try again later.</source>
        <translation>Der Dienst ist gerade nicht verfügbar. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>This application asked for something unknown. Please update it.</source>
        <translation>Diese Anwendung hat etwas Unbekanntes angefragt. Bitte aktualisieren Sie sie.</translation>
    </message>
    <message>
        <source>This application made a mistake. Please update it.</source>
        <translation>Diese Anwendung hat einen Fehler gemacht. Bitte aktualisieren Sie sie.</translation>
    </message>
    <message>
        <source>The application is not set up correctly. Please contact support.</source>
        <translation>Die Anwendung ist nicht richtig eingerichtet. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <source>There is no connection to the service. Please try again later.</source>
        <translation>Es besteht keine Verbindung zum Dienst. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The application is closing its connection.</source>
        <translation>Die Anwendung beendet ihre Verbindung.</translation>
    </message>
    <message>
        <source>This was broken off.</source>
        <translation>Der Vorgang wurde beendet.</translation>
    </message>
    <message>
        <source>Please wait for the answer to the last request.</source>
        <translation>Bitte warten Sie auf die Antwort auf die letzte Anfrage.</translation>
    </message>
    <message>
        <source>Those are not the characters in the picture. Please type those in the new one.</source>
        <translation>Das sind nicht die Zeichen im Bild. Bitte geben Sie die im neuen Bild ein.</translation>
    </message>
    <message>
        <source>The picture was too old. Please type the characters in the new one.</source>
        <translation>Das Bild war zu alt. Bitte geben Sie die Zeichen im neuen Bild ein.</translation>
    </message>
    <message>
        <source>The verification code is wrong.</source>
        <translation>Der Bestätigungscode ist falsch.</translation>
    </message>
    <message>
        <source>The verification code has expired. Please have a new one sent.</source>
        <translation>Der Bestätigungscode ist abgelaufen. Bitte lassen Sie sich einen neuen senden.</translation>
    </message>
    <message>
        <source>The name or the password is wrong.</source>
        <translation>Der Name oder das Passwort ist falsch.</translation>
    </message>
    <message>
        <source>The new password is too short.</source>
        <translation>Das neue Passwort ist zu kurz.</translation>
    </message>
    <message>
        <source>A code was sent a moment ago. Please wait a minute before you ask for another.</source>
        <translation>Es wurde gerade ein Code gesendet. Bitte warten Sie eine Minute, bevor Sie einen weiteren anfordern.</translation>
    </message>
    <message>
        <source>Too many wrong codes. Please have a new one sent.</source>
        <translation>Zu viele falsche Codes. Bitte lassen Sie sich einen neuen senden.</translation>
    </message>
</context>
</TS>
