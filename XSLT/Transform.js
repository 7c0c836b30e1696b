// Applies a style sheet to documents that the plug-in wrote without one. In a command prompt:
//
//   cscript //nologo Transform.js DOCUMENT STYLESHEET OUTPUT
//   cscript //nologo Transform.js FOLDER STYLESHEET EXTENSION
//
// such as
//
//   cscript //nologo Transform.js song.xml Html.xslt song.html
//   cscript //nologo Transform.js D:\Music Html.xslt .html
//
// The second takes every document (.xml) in the folder and in those below it, and writes each result beside its
// document. Results replace files of their names, but never a document, the style sheet or a recording. Says what is
// wrong with a document or the style sheet, with line and column where the XML parser gives them, and goes on with the
// next document. The exit code is 0 when every document has a result that is not empty, else 1.

// The classes that the plug-in uses. The same names with a version at their end belong to other classes.
var template = new ActiveXObject("MSXML2.XSLTemplate");
var files = new ActiveXObject("Scripting.FileSystemObject");

var USAGE = "Expected: DOCUMENT STYLESHEET OUTPUT, such as song.xml Html.xslt song.html\r\n" +
    "      or: FOLDER STYLESHEET EXTENSION, such as D:\\Music Html.xslt .html";
var XSL = "http://www.w3.org/1999/XSL/Transform";

// A double click starts wscript, which would show each line in a window of its own.
var hasConsole = /cscript\.exe$/i.test(WScript.FullName);
var lines = [];

function Print(line) {
    if (hasConsole) {
        WScript.Echo(line);
    } else {
        lines.push(line);
    }
}

// Throws an Error with what is wrong and where. A document is loaded from its file, where the plug-in has it in memory
// without line ends between the elements: the parser drops those, and lines and columns are the file's.
function Load(className, path) {
    var target = new ActiveXObject(className);
    target.async = false;
    if (!target.load(path)) {
        var error = target.parseError;
        var place = error.line > 0 ? ", line " + error.line + ", column " + error.linepos : "";
        var reason = error.reason || "it is not well-formed XML, or cannot be read";
        throw new Error(path + place + ": " + reason.replace(/\s+$/, "") +
            (error.srcText ? "\r\n    " + error.srcText : ""));
    }
    return target;
}

function LoadStyleSheet(path) {
    if (!files.FileExists(path)) {
        throw new Error(path + ": there is no such style sheet.\r\n" + USAGE);
    }
    var styleSheet = Load("MSXML2.FreeThreadedDOMDocument", path);
    var root = styleSheet.documentElement;
    if (root.namespaceURI !== XSL && root.xml.indexOf(XSL) < 0) {
        throw new Error(path + ": expected a style sheet, but its root element is " + root.nodeName + ".\r\n" + USAGE);
    }
    try {
        template.stylesheet = styleSheet;
    } catch (error) {
        throw new Error(path + ": this style sheet cannot be used: " + error.description);
    }
}

function IsDocument(document) {
    return document.documentElement.nodeName === "AudioMetadata";
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

// Enough of a stream, a character for each byte, to see whether it holds more than a byte-order mark.
function ShortText(stream) {
    stream.Position = 0;
    stream.Type = 2; // text
    stream.Charset = "iso-8859-1";
    return stream.ReadText(4);
}

function Same(path, other) {
    return path.toLowerCase() === other.toLowerCase();
}

// Whether the path has the extension of the document's source or converted file: a recording may be there.
function MayBeRecording(document, path) {
    var extensions = document.selectNodes("/AudioMetadata/*/FileNameExt");
    for (var i = 0; i < extensions.length; ++i) {
        if (Same(extensions.item(i).text, "." + files.GetExtensionName(path))) {
            return true;
        }
    }
    return false;
}

// Writes what the style sheet makes of the document, with the bytes that the plug-in would write. Throws an Error.
function Transform(document, path) {
    var processor = template.createProcessor();
    processor.input = document;
    var stream = ByteStream(processor);
    processor.transform();
    var text = stream ? ShortText(stream) : String(processor.output);
    if (/^(\xFF\xFE|\xFE\xFF|\xEF\xBB\xBF)?$/.test(text)) {
        throw new Error("the result is empty, and is not written");
    }
    if (stream) {
        stream.SaveToFile(path, 2); // in place of a file that exists
        return stream.Size + " bytes";
    }
    var file = files.CreateTextFile(path, true, true);
    file.Write(text);
    file.Close();
    return text.length + " characters in UTF-16, because nothing takes bytes here";
}

// Writes the result for a document and returns its size in words, or null for a file that is another's; throws an Error
// that names the file.
function Convert(source, styleSheet, output) {
    var document = Load("MSXML2.DOMDocument", source);
    if (!IsDocument(document)) {
        return null;
    }
    if (Same(output, source) || Same(output, styleSheet) || MayBeRecording(document, output)) {
        throw new Error(output + ": this would replace a document, the style sheet or a recording; nothing is written");
    }
    try {
        return Transform(document, output);
    } catch (error) {
        throw new Error(source + ": " + (error.message || error.description || "the style sheet failed"));
    }
}

// The paths of all .xml files in a folder and those below it.
function XmlFiles(folder) {
    // With /u, dir writes all letters, but only to a file. Scripts of Wine cannot list a folder by themselves.
    var list = files.BuildPath(files.GetSpecialFolder(2), files.GetTempName());
    var pattern = files.BuildPath(folder, "*.xml");
    new ActiveXObject("WScript.Shell").Run('cmd /u /c "dir /s /b /a-d "' + pattern + '" >"' + list + '""', 0, true);
    var stream = files.OpenTextFile(list, 1, false, -1);
    var text = stream.AtEndOfStream ? "" : stream.ReadAll();
    stream.Close();
    files.DeleteFile(list);
    return text.match(/.+\.xml(?=\r\n)/gi) || []; // dir takes song.xmlx for song.xml
}

// Both of these throw an Error for what is wrong with the arguments, and return the exit code.
function ConvertFolder(folder, styleSheet, extension) {
    if (!/^\.[^\\\/:*?"<>|]+$/.test(extension) || Same(extension, ".xml")) {
        throw new Error(extension + ": expected an extension for the results, other than .xml, with its dot.\r\n" +
            USAGE);
    }
    var sources = XmlFiles(folder), counts = { written: 0, failed: 0, other: 0 };
    for (var i = 0; i < sources.length; ++i) {
        try {
            var size = Convert(sources[i], styleSheet, sources[i].replace(/\.xml$/i, extension));
            ++counts[size === null ? "other" : "written"];
        } catch (error) {
            ++counts.failed;
            Print(error.message);
        }
        if ((i + 1) % 100 === 0) {
            Print(i + 1 + " of " + sources.length);
        }
    }
    Print(counts.written + " written, " + counts.failed + " failed, " + counts.other + " are no documents");
    return counts.failed || !counts.written ? 1 : 0;
}

function Main(source, styleSheet, output) {
    var path = files.GetAbsolutePathName(source), sheet = files.GetAbsolutePathName(styleSheet);
    LoadStyleSheet(sheet);
    if (files.FolderExists(path)) {
        return ConvertFolder(path, sheet, output);
    }
    if (!files.FileExists(path)) {
        throw new Error(path + ": there is no such document or folder.\r\n" + USAGE);
    }
    var result = files.GetAbsolutePathName(output), size = Convert(path, sheet, result);
    if (size === null) {
        throw new Error(path + ": expected a document that the plug-in wrote without a style sheet; its root element is " +
            "AudioMetadata.");
    }
    Print(result + ": " + size);
    return 0;
}

var exitCode = 1;
if (WScript.Arguments.length === 3) {
    try {
        exitCode = Main(WScript.Arguments(0), WScript.Arguments(1), WScript.Arguments(2));
    } catch (error) {
        Print(error.message);
    }
} else {
    Print(USAGE);
}
if (!hasConsole) {
    WScript.Echo(lines.join("\r\n"));
}
WScript.Quit(exitCode);
