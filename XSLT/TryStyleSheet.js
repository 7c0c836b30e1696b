// Tries a style sheet on a document without converting anything. In a command prompt, in the folder of your files:
//
//   cscript //nologo TryStyleSheet.js song.xml my.xslt song.html
//
// song.xml is a document that the plug-in wrote without a style sheet. Prints what is wrong with it or with the style
// sheet, with line and column where the XML parser gives them, and ends with 1; or writes song.html with the bytes that
// the plug-in would write, and ends with 0.

// The classes that the plug-in uses. The same names with a version at their end belong to other classes.
var source = new ActiveXObject("MSXML2.DOMDocument");
var styleSheet = new ActiveXObject("MSXML2.FreeThreadedDOMDocument");
var template = new ActiveXObject("MSXML2.XSLTemplate");
var files = new ActiveXObject("Scripting.FileSystemObject");

// One message, because a double click on the script shows each in a window of its own.
function End(exitCode, message) {
    WScript.Echo(message);
    WScript.Quit(exitCode);
}

// Loads source, too, from its file, where the plug-in has it in memory without line ends between the elements: the
// parser drops those, and lines and columns are the file's.
function Load(target, path) {
    if (!files.FileExists(path)) {
        End(1, path + ": there is no such file.");
    }
    target.async = false;
    if (!target.load(path)) {
        var error = target.parseError;
        var place = error.line > 0 ? ", line " + error.line + ", column " + error.linepos : "";
        End(1, path + place + ": " + error.reason + "\r\n" + error.srcText);
    }
}

// A stream for bytes, or null where there is none that MSXML can write to, as under Wine.
function ByteStream(processor) {
    try {
        var stream = new ActiveXObject("ADODB.Stream");
        stream.Type = 1; // bytes
        stream.Open();
        processor.output = stream;
        return stream;
    } catch (error) {
        return null;
    }
}

if (WScript.Arguments.length != 3) {
    End(1, "cscript //nologo TryStyleSheet.js DOCUMENT STYLESHEET OUTPUT");
}
Load(source, files.GetAbsolutePathName(WScript.Arguments(0)));
Load(styleSheet, files.GetAbsolutePathName(WScript.Arguments(1)));
var path = files.GetAbsolutePathName(WScript.Arguments(2));

try {
    template.stylesheet = styleSheet;
    var processor = template.createProcessor();
    processor.input = source;
    var stream = ByteStream(processor);
    processor.transform();
} catch (error) {
    End(1, "The style sheet cannot be applied: " + error.description);
}

if (stream) {
    stream.SaveToFile(path, 2); // in place of a file that exists
    End(0, path + ": " + stream.Size + " bytes");
}
var text = String(processor.output);
var file = files.CreateTextFile(path, true, true);
file.Write(text);
file.Close();
End(0, path + ": " + text.length + " characters in UTF-16, because nothing takes bytes here");
