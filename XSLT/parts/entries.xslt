<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
    <xsl:key name="entry" match="AudioProperties/* | IDTags/*" use="concat(generate-id(..), ' ', @name)"/>

    <!-- Applies the mode "name", with all values, to the first of a list's entries that have one name. -->
    <xsl:template match="*" mode="group">
        <xsl:variable name="key" select="concat(generate-id(..), ' ', @name)"/>
        <xsl:if test="generate-id() = generate-id(key('entry', $key)[1])">
            <xsl:variable name="values">
                <xsl:call-template name="values">
                    <xsl:with-param name="entries" select="key('entry', $key)"/>
                </xsl:call-template>
            </xsl:variable>
            <xsl:apply-templates select="." mode="name">
                <xsl:with-param name="values" select="string($values)"/>
            </xsl:apply-templates>
        </xsl:if>
    </xsl:template>
</xsl:stylesheet>
