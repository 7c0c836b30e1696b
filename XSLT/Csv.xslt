<?xml version="1.0" encoding="UTF-8"?>
<!--
    Metadata as comma-separated values (RFC 4180, UTF-8). File extension to set in the panel: .csv

    One header row, one row for the source file ("Source"), one for the converted file ("Converted"). After
    the fixed columns follows one column for each property name and then one for each tag name that either
    file has, headed "AudioProperties/NAME" and "IDTags/NAME". Several values of one name share the cell,
    joined by "; ". What a file does not have is an empty cell.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:output method="text" encoding="UTF-8"/>
    <xsl:strip-space elements="*"/>

    <!-- Values of one tag stand side by side: only the first of such a run can be the first of its name. -->
    <xsl:key name="column" match="AudioProperties/*[not(@name = preceding-sibling::*[1]/@name)]
        | IDTags/*[not(@name = preceding-sibling::*[1]/@name)]" use="concat(name(..), '/', @name)"/>
    <xsl:key name="entry" match="AudioProperties/* | IDTags/*"
        use="concat(generate-id(../..), name(..), '/', @name)"/>

    <xsl:variable name="quote" select="'&quot;'"/>
    <xsl:variable name="rowEnd" select="'&#13;&#10;'"/>

    <xsl:template match="/">
        <xsl:variable name="properties"
            select="AudioMetadata/*/AudioProperties/*[not(@name = preceding-sibling::*[1]/@name)][
                generate-id() = generate-id(key('column', concat('AudioProperties/', @name))[1])]"/>
        <xsl:variable name="tags"
            select="AudioMetadata/*/IDTags/*[not(@name = preceding-sibling::*[1]/@name)][
                generate-id() = generate-id(key('column', concat('IDTags/', @name))[1])]"/>
        <xsl:text>File</xsl:text>
        <xsl:for-each select="AudioMetadata/SourceFile/*[starts-with(name(), 'File')]
            | AudioMetadata/SourceFile/AudioFormat/*">
            <xsl:value-of select="concat(',', name())"/>
        </xsl:for-each>
        <xsl:apply-templates select="$properties" mode="heading"/>
        <xsl:apply-templates select="$tags" mode="heading"/>
        <xsl:value-of select="$rowEnd"/>
        <xsl:for-each select="AudioMetadata/*">
            <xsl:variable name="file" select="generate-id()"/>
            <xsl:value-of select="substring-before(name(), 'File')"/>
            <xsl:for-each select="*[starts-with(name(), 'File')] | AudioFormat/*">
                <xsl:call-template name="cell">
                    <xsl:with-param name="values" select="."/>
                </xsl:call-template>
            </xsl:for-each>
            <xsl:for-each select="$properties">
                <xsl:call-template name="cell">
                    <xsl:with-param name="values"
                        select="key('entry', concat($file, 'AudioProperties/', @name))"/>
                </xsl:call-template>
            </xsl:for-each>
            <xsl:for-each select="$tags">
                <xsl:call-template name="cell">
                    <xsl:with-param name="values" select="key('entry', concat($file, 'IDTags/', @name))"/>
                </xsl:call-template>
            </xsl:for-each>
            <xsl:value-of select="$rowEnd"/>
        </xsl:for-each>
    </xsl:template>

    <xsl:template match="*" mode="heading">
        <xsl:call-template name="cell">
            <xsl:with-param name="prefix" select="concat(name(..), '/')"/>
            <xsl:with-param name="values" select="@name"/>
        </xsl:call-template>
    </xsl:template>

    <!-- One cell with the comma before it, in quotes when one of the values needs them. -->
    <xsl:template name="cell">
        <xsl:param name="prefix"/>
        <xsl:param name="values"/>
        <xsl:variable name="quotes" select="$values[translate(., ',&quot;&#13;&#10;', '') != string()]"/>
        <xsl:text>,</xsl:text>
        <xsl:if test="$quotes">"</xsl:if>
        <xsl:value-of select="$prefix"/>
        <xsl:for-each select="$values">
            <xsl:if test="position() &gt; 1">
                <xsl:value-of select="'; '"/>
            </xsl:if>
            <xsl:call-template name="escape">
                <xsl:with-param name="text" select="string()"/>
            </xsl:call-template>
        </xsl:for-each>
        <xsl:if test="$quotes">"</xsl:if>
    </xsl:template>

    <!--
        Writes text with every quote doubled, then clean as it stands. Splits near the middle, so that the
        depth stays small for a long text, and only beside a quote, so that a surrogate pair is never cut.
    -->
    <xsl:template name="escape">
        <xsl:param name="text"/>
        <xsl:param name="clean"/>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="right" select="substring($text, $half + 1)"/>
        <xsl:choose>
            <xsl:when test="contains($right, $quote)">
                <xsl:call-template name="escape">
                    <xsl:with-param name="text"
                        select="concat(substring($text, 1, $half), substring-before($right, $quote))"/>
                </xsl:call-template>
                <xsl:value-of select="concat($quote, $quote)"/>
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring-after($right, $quote)"/>
                    <xsl:with-param name="clean" select="$clean"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:when test="contains($text, $quote)">
                <xsl:call-template name="escape">
                    <xsl:with-param name="text" select="substring($text, 1, $half)"/>
                    <xsl:with-param name="clean" select="concat($right, $clean)"/>
                </xsl:call-template>
            </xsl:when>
            <xsl:otherwise>
                <xsl:value-of select="concat($text, $clean)"/>
            </xsl:otherwise>
        </xsl:choose>
    </xsl:template>
</xsl:stylesheet>
