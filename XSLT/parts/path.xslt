<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <!-- The converted file with its folder. A name without a backslash stands whole as its folder, too. -->
    <xsl:variable name="path">
        <xsl:if test="contains(/AudioMetadata/ConvertedFile/FileNamePath, '\')">
            <xsl:value-of select="/AudioMetadata/ConvertedFile/FileNamePath"/>
        </xsl:if>
        <xsl:value-of select="/AudioMetadata/ConvertedFile/FileName"/>
    </xsl:variable>
</xsl:stylesheet>
